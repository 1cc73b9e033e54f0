// SPDX-License-Identifier: MIT
// Long runs: every frame once, in order and whole, or counted as lost.
#include "tests/support/CounterCameraTest.h"
#include "tests/support/Sanitizers.h"

#include <atomic>
#include <thread>

namespace {

constexpr std::uint64_t kFrames = 100000;
constexpr std::uint64_t kSlots = 5000;

class Stream : public CounterCameraTest
{
protected:
  void SetUp() override
  {
    CounterCameraTest::SetUp();
    Open();
    StartUntilAborted();
  }

  /// Takes every image that is there. Each must be whole and newer than the one before.
  void Drain()
  {
    while (GetOldestImage16(image_.data(), image_.size()) == RC_SUCCESS) {
      const std::uint64_t frame = FrameNumberOf(image_);
      ASSERT_NE(frame, 0u) << "after frame " << lastFrame_ << " came one that is not whole";
      ASSERT_GT(frame, lastFrame_) << "twice, or out of order";
      skipped_ += frame - lastFrame_ - 1;
      lastFrame_ = frame;
      ++taken_;
    }
  }

  TCounterImage image_{};
  std::uint64_t lastFrame_ = 0;
  std::atomic<std::uint64_t> taken_{0};
  std::uint64_t skipped_ = 0;
};

// The camera makes frames as fast as it can, but never a whole ring ahead of the application, as a camera would
// that the application can follow.
TEST_F(Stream, NothingIsLostWhileTheApplicationKeepsUp)
{
  constexpr std::uint64_t kBurst = 500;
  std::thread camera([&] {
    for (std::uint64_t made = 0; made < kFrames; made += kBurst) {
      if (!Eventually([&] { return made + kBurst < taken_ + kSlots - 1; })) return;
      VXSIM_PushFrames(0, static_cast<int>(kBurst));
    }
  });
  while (taken_ < kFrames && !HasFatalFailure()) {
    WaitForAcquisitionTimeOut(200);
    Drain();
    if (Status() != RC_ACQUIRING) break;
  }
  camera.join();
  Drain();
  EXPECT_EQ(taken_, kFrames);
  EXPECT_EQ(skipped_, 0u);
  EXPECT_EQ(lastFrame_, kFrames);
  EXPECT_EQ(ImageCount(), static_cast<long>(kFrames));
  EXPECT_EQ(Statistics().framesDelivered, kFrames);
  EXPECT_EQ(Statistics().framesOverflowed, 0u);
}

TEST_F(Stream, WhatIsOverwrittenIsCountedExactly)
{
  constexpr std::uint64_t kBurst = 7000; // the ring holds 5000
  std::uint64_t made = 0;
  for (; made < kFrames; made += kBurst) {
    Push(static_cast<int>(kBurst));
    ASSERT_TRUE(HasImages(static_cast<long>(made + kBurst)));
    Drain();
    ASSERT_EQ(lastFrame_, made + kBurst);
  }
  EXPECT_EQ(taken_ + skipped_, made);
  EXPECT_EQ(skipped_, made / kBurst * (kBurst - kSlots));
  EXPECT_EQ(Statistics().framesDelivered, made);
}

// Frames arrive while the thread that counts them is delayed, so that the camera is ahead of the count by nearly a
// ring, and the program reads images that the camera has reached, is about to reach, or has not reached.
TEST_F(Stream, AnImageThatIsIntactIsTheOneWithItsNumber)
{
  if (kHasThreadSanitizer)
    GTEST_SKIP() << "the camera writes over images while they are copied: that is what is tested";
  AddFault("call VX_WaitBuffer every 150 delay 10ms");
  std::atomic<bool> isOver{false};
  std::thread camera([&] {
    constexpr std::uint64_t kBurst = 100;
    for (std::uint64_t made = 0; made < kFrames; made += kBurst) {
      if (!Eventually([&] { return made + kBurst < static_cast<std::uint64_t>(ImageCount()) + kSlots; })) break;
      VXSIM_PushFrames(0, static_cast<int>(kBurst));
    }
    isOver = true;
  });
  std::uint64_t intact = 0;
  std::uint64_t refused = 0;
  std::uint64_t others = 0;
  while (!isOver) {
    int first = 0;
    int last = 0;
    if (GetNumberAvailableImages(&first, &last) != RC_SUCCESS) continue;
    for (long number = first; number <= last; number += 20) {
      long long ticks = 0;
      const unsigned int code = vxmcd_GetIntactImage16(number, image_.data(), image_.size(), &ticks);
      ++(code == RC_SUCCESS ? intact : refused);
      if (code != RC_SUCCESS) continue;
      long long recorded = -1;
      vxsys_GetRawMetaDataInfo(nullptr, &recorded, static_cast<unsigned int>(number - 1));
      if (FrameNumberOf(image_) != static_cast<std::uint64_t>(number) || ticks != recorded) ++others;
    }
  }
  camera.join();
  EXPECT_EQ(others, 0u) << "of " << intact;
  EXPECT_GT(intact, 100u);
  EXPECT_GT(refused, 0u) << "the reader was never overtaken, so this has tested nothing";
  EXPECT_EQ(Status(), static_cast<int>(RC_ACQUIRING));
}

} // namespace
