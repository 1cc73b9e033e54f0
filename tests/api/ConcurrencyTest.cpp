// SPDX-License-Identifier: MIT
// Several threads on one camera, and two cameras: nothing may crash, hang or race, whoever comes first.
#include "tests/support/CounterCameraTest.h"
#include "tests/support/TScratchDirectory.h"

#include <array>
#include <atomic>
#include <functional>
#include <thread>

namespace {

/// Runs each action again and again in a separate thread, until each has run often enough.
void InParallel(const std::vector<std::function<void(int)>>& actions, int turns)
{
  std::vector<std::thread> threads;
  for (const auto& action : actions)
    threads.emplace_back([&action, turns] {
      for (int turn = 0; turn < turns; ++turn) action(turn);
    });
  for (std::thread& thread : threads) thread.join();
}

class Concurrency : public CounterCameraTest
{
};

TEST_F(Concurrency, ClosingWakesEveryWaiter)
{
  for (int round = 0; round < 10; ++round) {
    Open();
    StartUntilAborted();
    std::atomic<int> inside{0};
    std::vector<std::thread> waiters;
    for (int waiter = 0; waiter < 4; ++waiter)
      waiters.emplace_back([&] {
        ++inside;
        const unsigned int code = WaitForAcquisition();
        EXPECT_TRUE(code == RC_NO_NEW_DATA || code == RC_NOT_INITIALIZED) << code;
      });
    ASSERT_TRUE(Eventually([&] { return inside == 4; }));
    EXPECT_EQ(ShutDown(), RC_SUCCESS);
    for (std::thread& waiter : waiters) waiter.join();
  }
}

TEST_F(Concurrency, ClosingWaitsForTheCallUnderWay)
{
  Open();
  AddFault("call VX_GetInt feature SensorHeight delay 200ms");
  std::thread caller([] {
    int width = 0;
    int height = 0;
    EXPECT_EQ(GetDetector(&width, &height), RC_SUCCESS)
        << "the width is read after the delay, from an open camera";
  });
  EXPECT_TRUE(Eventually([] { return VXSIM_GetFaultsFired() > 0; }));
  EXPECT_EQ(ShutDown(), RC_SUCCESS);
  caller.join();
}

TEST_F(Concurrency, OneOfTwoThreadsClosesACamera)
{
  Open();
  ASSERT_EQ(VXSIM_AddFault("call VX_SetBool feature MetadataEnable any delay 100ms"), VX_SUCCESS);
  std::atomic<int> closed{0};
  const auto close = [&](int) { closed += ShutDown() == RC_SUCCESS ? 1 : 0; };
  InParallel({close, close}, 1);
  EXPECT_EQ(closed, 1);
  EXPECT_EQ(VXSIM_GetOpenCount(), 0);
}

TEST_F(Concurrency, StartsAbortsAndReleasesFromManyThreads)
{
  Open();
  SetAcquisitionMode(kModeUntilAborted);
  const auto isOneOf = [](unsigned int code, std::initializer_list<unsigned int> codes) {
    EXPECT_TRUE(std::find(codes.begin(), codes.end(), code) != codes.end()) << code;
  };
  TCounterImage image{};
  InParallel({[&](int) { isOneOf(StartAcquisition(), {RC_SUCCESS}); },
              [&](int) {
                isOneOf(AbortAcquisition(), {RC_SUCCESS, RC_IDLE});
              },
              [&](int) { isOneOf(FreeInternalMemory(), {RC_SUCCESS}); },
              [&](int) {
                isOneOf(WaitForAcquisitionTimeOut(5), {RC_SUCCESS, RC_NO_NEW_DATA});
                isOneOf(CancelWait(), {RC_SUCCESS});
              },
              [&](int) {
                VXSIM_PushFrames(0, 3);
                isOneOf(GetMostRecentImage16(image.data(), image.size()),
                        {RC_SUCCESS, RC_NO_NEW_DATA, RC_FRAME_UNAVAILABLE});
                isOneOf(GetOldestImage16(image.data(), image.size()), {RC_SUCCESS, RC_NO_NEW_DATA});
                const int status = Status();
                isOneOf(static_cast<unsigned int>(status), {RC_ACQUIRING, RC_IDLE});
              }},
             15);
  AbortAcquisition();
  ExpectCleanRun();
}

TEST_F(Concurrency, ImagesStayWholeWhileAnotherThreadStartsAnew)
{
  Open();
  SetAcquisitionMode(kModeUntilAborted);
  std::atomic<bool> isOver{false};
  std::thread reader([&] {
    TCounterImage image{};
    while (!isOver) {
      image.fill(0);
      if (GetMostRecentImage16(image.data(), image.size()) != RC_SUCCESS || image[0] == 0) continue;
      ASSERT_NE(FrameNumberOf(image), 0u);
    }
  });
  for (int round = 0; round < 30; ++round) {
    ASSERT_EQ(StartAcquisition(), RC_SUCCESS);
    Push(20);
    ASSERT_TRUE(HasImages(20));
    if (round % 3 == 0) FreeInternalMemory();
  }
  isOver = true;
  reader.join();
}

/// A camera of large images, which show their run.
class LargeImages : public SimulatedCameraTest
{
protected:
  LargeImages() : SimulatedCameraTest(kTwoManualCameras) {}

  static constexpr int kWidth = 1024;
  static constexpr int kHeight = 1024;
};

TEST_F(LargeImages, ComeOnceEachAlthoughReadersMeetAStart)
{
  constexpr int kImages = 6;
  Open(kWidth, kHeight);
  SetAcquisitionMode(kModeUntilAborted);
  for (int round = 0; round < 12; ++round) {
    ASSERT_EQ(StartAcquisition(), RC_SUCCESS);
    PushFrames(kImages, 1);
    std::array<std::atomic<int>, 256> seen{}; // by what the image holds
    std::atomic<int> copies{0};
    std::atomic<bool> isOver{false};
    const auto read = [&] {
      std::vector<int> image(kWidth * kHeight);
      for (bool isLast = false; !isLast;) {
        isLast = isOver;
        image[0] = 0;
        if (GetOldestImage(image.data(), image.size()) != RC_SUCCESS) continue;
        ++seen[static_cast<std::size_t>(image[0]) % 256];
        ++copies;
        isLast = false;
      }
    };
    std::thread one(read);
    std::thread other(read);
    EXPECT_TRUE(Eventually([&] { return copies >= 2; }));
    const unsigned int code = StartAcquisition();
    PushFrames(kImages, 101);
    isOver = true;
    one.join();
    other.join();
    ASSERT_EQ(code, RC_SUCCESS);
    for (std::size_t image = 1; image <= kImages; ++image) {
      ASSERT_LE(seen[image], 1) << "round " << round;
      ASSERT_EQ(seen[100 + image], 1) << "image " << image << " of the new run, round " << round;
    }
  }
}

class TwoCameras : public SimulatedCameraTest
{
protected:
  TwoCameras() : SimulatedCameraTest(kTwoManualCameras) {}

  void OpenBoth()
  {
    ASSERT_EQ(SetCurrentCamera(102), RC_SUCCESS);
    Open();
    ASSERT_EQ(SetCurrentCamera(101), RC_SUCCESS);
    Open();
  }

  static std::uint64_t BuffersGivenTo(int device)
  {
    VXSIM_Statistics statistics{};
    EXPECT_EQ(VXSIM_GetStatistics(device, &statistics), VX_SUCCESS);
    return statistics.buffersQueued;
  }
};

// The program chooses another camera while frames are on their way: their slots go back to the camera they came from.
TEST_F(TwoCameras, SlotsGoBackToTheirOwnCamera)
{
  const TScratchDirectory scratch;
  for (const bool spooled : {false, true}) {
    OpenBoth();
    std::string path = scratch.Directory();
    SetNumberKinetics(10000);
    SetAcquisitionMode(spooled ? kModeSeries : kModeUntilAborted);
    ASSERT_EQ(SetSpool(spooled ? 1 : 0, 1, path.data()), RC_SUCCESS);
    ASSERT_EQ(StartAcquisition(), RC_SUCCESS);
    for (int round = 0; round < 30; ++round) {
      ASSERT_EQ(SetCurrentCamera(101), RC_SUCCESS);
      ASSERT_EQ(VXSIM_PushFrames(0, 20), VX_SUCCESS);
      ASSERT_EQ(SetCurrentCamera(102), RC_SUCCESS);
      ASSERT_EQ(VXSIM_PushFrames(0, 1), VX_SUCCESS); // for a wait that is in progress
    }
    ASSERT_EQ(SetCurrentCamera(101), RC_SUCCESS);
    ASSERT_TRUE(Eventually([] {
      long images = 0;
      GetTotalNumberImagesAcquired(&images);
      return images == 30 * 21;
    }));
    EXPECT_EQ(BuffersGivenTo(1), 0u) << (spooled ? "spooled" : "until aborted");
    ASSERT_EQ(ShutDown(), RC_SUCCESS);
    ASSERT_EQ(SetCurrentCamera(102), RC_SUCCESS);
    ASSERT_EQ(ShutDown(), RC_SUCCESS);
    ASSERT_EQ(SetCurrentCamera(101), RC_SUCCESS);
  }
}

// The camera delays both calls while another thread chooses the other one.
TEST_F(TwoCameras, ACallKeepsTheCameraThatItBeganWith)
{
  OpenBoth();
  ASSERT_EQ(SetCurrentCamera(102), RC_SUCCESS);
  SetAcquisitionMode(kModeUntilAborted);
  ASSERT_EQ(StartAcquisition(), RC_SUCCESS);

  const auto whileDelayed = [](const char* delayed, unsigned int (*call)()) {
    SetCurrentCamera(101);
    VXSIM_StartCallLog(0);
    EXPECT_EQ(VXSIM_AddFault((std::string("call ") + delayed + " at 1 delay 300ms").c_str()), VX_SUCCESS);
    unsigned int code = 0;
    std::thread caller([&] { code = call(); });
    EXPECT_TRUE(Eventually([] { return VXSIM_GetCallCount() > 0; }));
    SetCurrentCamera(102);
    caller.join();
    VXSIM_ClearFaults();
    VXSIM_StopCallLog();
    EXPECT_EQ(code, RC_SUCCESS) << delayed;
    EXPECT_EQ(Status(), RC_ACQUIRING) << "the other camera goes on";
  };
  int status = 0;
  whileDelayed("VX_SetBool", [] { return ShutDown(); });
  SetCurrentCamera(101);
  EXPECT_EQ(GetStatus(&status), RC_NOT_INITIALIZED);
  whileDelayed("VX_IsImplemented", [] { return Initialize(nullptr); });
  SetCurrentCamera(101);
  EXPECT_EQ(GetStatus(&status), RC_SUCCESS);
  EXPECT_EQ(status, RC_IDLE);
}

TEST_F(TwoCameras, FramesOfTheOtherCameraDoNotEnterTheRing)
{
  Open();
  SetAcquisitionMode(kModeUntilAborted);
  ASSERT_EQ(StartAcquisition(), RC_SUCCESS);
  ASSERT_EQ(SetCurrentCamera(102), RC_SUCCESS);
  Open();
  SetAcquisitionMode(kModeUntilAborted);
  ASSERT_EQ(StartAcquisition(), RC_SUCCESS);
  // Both threads wait for the frames of 102 now; those that the wrong one gets are not counted anywhere.
  ASSERT_EQ(VXSIM_PushFrames(1, 50), VX_SUCCESS);
  EXPECT_EQ(FreeInternalMemory(), RC_SUCCESS);
  EXPECT_EQ(ShutDown(), RC_SUCCESS);
  ASSERT_EQ(SetCurrentCamera(101), RC_SUCCESS);
  long images = -1;
  EXPECT_EQ(GetTotalNumberImagesAcquired(&images), RC_SUCCESS);
  EXPECT_EQ(images, 0);
  EXPECT_EQ(ShutDown(), RC_SUCCESS);
}

} // namespace
