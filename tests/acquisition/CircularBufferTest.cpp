// SPDX-License-Identifier: MIT
// The ring: numbering, memory, waiting, and what a lost slot does to it.
#include "acquisition/TCircularBuffer.h"
#include "acquisition/TRunCamera.h"
#include "acquisition/TVxmcdAcquisitionManager.h"
#include "tests/spool/logged_by.h"
#include "tests/utility/SystemCalls.h"
#include "utility/TQuorinCriticalSection.h"
#include "utility/TQuorinEvent.h"
#include "vxcore_simulator.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <cstring>
#include <limits>
#include <random>
#include <sys/mman.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

constexpr int kLongMs = 10000;

void Deliver(TCircularBuffer& ring, std::uint64_t slot)
{
  ASSERT_TRUE(ring.PlaceNext(ring.GetBuffer(slot)));
  ring.Increment();
}

void DeliverInOrder(TCircularBuffer& ring, std::uint64_t frames)
{
  for (std::uint64_t frame = 0; frame < frames; ++frame)
    Deliver(ring, (ring.GetMaxImageIndex()) % ring.GetBufferCount() + 1);
}

TEST(CircularBuffer, NumbersImagesFromOneAndKeepsTheNewest)
{
  TCircularBuffer ring;
  ASSERT_EQ(ring.Allocate(64, 10), 0);
  ring.Reset();
  EXPECT_EQ(ring.GetMinImageIndex(), 0u);
  EXPECT_EQ(ring.GetMaxImageIndex(), 0u);
  EXPECT_EQ(ring.GetBufferForImage(1), nullptr);

  DeliverInOrder(ring, 3);
  EXPECT_EQ(ring.GetMinImageIndex(), 1u);
  EXPECT_EQ(ring.GetBufferForImage(3), ring.GetBuffer(3));
  EXPECT_EQ(ring.GetBufferForImage(4), nullptr);

  DeliverInOrder(ring, 22);
  EXPECT_EQ(ring.GetMinImageIndex(), 16u);
  EXPECT_EQ(ring.GetMaxImageIndex(), 25u);
  EXPECT_EQ(ring.GetBufferForImage(16), ring.GetBuffer(6));
  EXPECT_EQ(ring.GetBufferForImage(15), nullptr);
  EXPECT_EQ(ring.GetBufferForImage(26), nullptr);
}

TEST(CircularBuffer, SlotsAreAlignedAndApart)
{
  for (const std::uint64_t size : {1u, 63u, 64u, 100003u}) {
    TCircularBuffer ring;
    ASSERT_EQ(ring.Allocate(size, 5), 0);
    for (std::uint64_t slot = 1; slot <= 5; ++slot) {
      EXPECT_EQ(reinterpret_cast<std::uintptr_t>(ring.GetBuffer(slot)) % 8, 0u);
      std::memset(ring.GetBuffer(slot), static_cast<int>(slot), size);
    }
    for (std::uint64_t slot = 1; slot <= 5; ++slot) {
      EXPECT_EQ(ring.GetBuffer(slot)[0], slot);
      EXPECT_EQ(ring.GetBuffer(slot)[size - 1], slot);
    }
    EXPECT_EQ(ring.GetBuffer(6), nullptr);
    EXPECT_EQ(ring.GetBuffer(0), nullptr);
  }
}

TEST(CircularBuffer, RefusesWhatDoesNotFitAndHasNoSlotsThen)
{
  constexpr std::uint64_t kHuge = std::uint64_t{1} << 44;
  constexpr std::uint64_t kLimit = std::numeric_limits<std::uint64_t>::max();
  TCircularBuffer ring;
  for (const auto& [size, count] : {std::pair{kHuge, std::uint64_t{100}}, std::pair{kLimit, std::uint64_t{2}},
                                    std::pair{kLimit / 2 + 2, std::uint64_t{2}}}) {
    ASSERT_EQ(ring.Allocate(64, 4), 0);
    EXPECT_EQ(ring.Allocate(size, count), 1);
    EXPECT_EQ(ring.GetBufferCount(), 0u);
    EXPECT_EQ(ring.GetBuffer(1), nullptr);
  }
  EXPECT_EQ(ring.Allocate(64, 0), 0);
  EXPECT_EQ(ring.GetBufferCount(), 0u);
}

TEST(CircularBuffer, KeepsItsPagesForARingOfTheSameShapeOnly)
{
  TCircularBuffer ring;
  ASSERT_EQ(ring.Allocate(5000, 8), 0);
  unsigned char* const first = ring.GetBuffer(1);
  first[0] = 77;
  ASSERT_EQ(ring.Allocate(5000, 8), 0);
  EXPECT_EQ(ring.GetBuffer(1), first);
  EXPECT_EQ(first[0], 77);

  ring.Delete();
  EXPECT_EQ(ring.GetBuffer(1), nullptr);
  ASSERT_EQ(ring.Allocate(5000, 8), 0);
  EXPECT_EQ(ring.GetBuffer(1)[0], 0) << "memory that was returned comes as fresh pages";
}

TEST(CircularBuffer, AcquiredImageOutlivesTheRing)
{
  TCircularBuffer ring;
  ASSERT_EQ(ring.Allocate(100000, 4), 0);
  ring.Reset();
  DeliverInOrder(ring, 2);
  unsigned char* const acquired = ring.AcquireBufferForImage(2).bytes;
  ASSERT_NE(acquired, nullptr);
  std::memset(acquired, 42, 100000);

  ASSERT_EQ(ring.Allocate(100000, 4), 0);
  EXPECT_NE(ring.GetBuffer(2), acquired) << "a ring that is being read is not used again";
  ring.Delete();
  EXPECT_EQ(acquired[99999], 42);
  ring.ReleaseBuffer(acquired);
  ring.ReleaseBuffer(acquired); // a release too many changes nothing
}

TEST(CircularBuffer, FollowsTheCameraWhenASlotIsLost)
{
  TCircularBuffer ring;
  ASSERT_EQ(ring.Allocate(64, 4), 0);
  ring.Reset();
  std::vector<unsigned char*> slots;
  for (std::uint64_t slot = 1; slot <= 4; ++slot) slots.push_back(ring.GetBuffer(slot));
  std::vector<unsigned char*> delivered; // delivered[n - 1] is where image n went
  const auto deliver = [&](unsigned char* slot) {
    ASSERT_TRUE(ring.PlaceNext(slot));
    ring.Increment();
    delivered.push_back(slot);
  };
  for (unsigned char* slot : slots) deliver(slot);

  // The camera has lost slot 1 and goes on with three.
  for (int round = 0; round < 5; ++round)
    for (const int slot : {1, 2, 3}) {
      deliver(slots[static_cast<std::size_t>(slot)]);
      for (std::uint64_t image = ring.GetMinImageIndex(); image <= ring.GetMaxImageIndex(); ++image) {
        EXPECT_EQ(ring.GetBufferForImage(image), delivered[image - 1]) << "image " << image;
        for (std::uint64_t newer = image + 1; newer <= ring.GetMaxImageIndex(); ++newer)
          EXPECT_NE(delivered[newer - 1], delivered[image - 1]) << "image " << image << " was overwritten";
      }
      EXPECT_GE(ring.GetMaxImageIndex() - ring.GetMinImageIndex() + 1, 3u);
    }
}

// Whatever order slots come in, an image that is there is the frame with its number.
TEST(CircularBuffer, NumbersStayTrueForAnyOrderOfSlots)
{
  std::mt19937 random(7);
  for (int round = 0; round < 2000; ++round) {
    const std::uint64_t count = random() % 6 + 1;
    TCircularBuffer ring;
    ASSERT_EQ(ring.Allocate(64, count), 0);
    ring.Reset();
    std::vector<unsigned char*> slots;
    for (std::uint64_t slot = 1; slot <= count; ++slot) slots.push_back(ring.GetBuffer(slot));
    for (std::uint64_t image = 1; image <= 30; ++image) {
      // In order most of the time, so that the ring is neither always nor never right by accident.
      const std::size_t slot = random() % 4 == 0 ? random() % count : (image - 1) % count;
      std::memcpy(slots[slot], &image, sizeof image);
      ASSERT_TRUE(ring.PlaceNext(slots[slot]));
      ring.Increment();
      for (std::uint64_t number = 1; number <= image; ++number) {
        const unsigned char* const stored = ring.GetBufferForImage(number);
        if (!stored) continue;
        std::uint64_t written = 0;
        std::memcpy(&written, stored, sizeof written);
        ASSERT_EQ(written, number) << "after image " << image << " in round " << round;
      }
      ASSERT_NE(ring.GetBufferForImage(image), nullptr);
    }
  }
}

TEST(CircularBuffer, ImagesOfTheRunBeforeAreGoneOnceTheRingIsReplaced)
{
  TCircularBuffer ring;
  ASSERT_EQ(ring.Allocate(64, 4), 0);
  ring.Reset();
  DeliverInOrder(ring, 3);
  ASSERT_EQ(ring.Allocate(32, 4), 0);
  EXPECT_EQ(ring.GetMaxImageIndex(), 3u) << "numbers stand until the next run begins";
  EXPECT_EQ(ring.GetBufferForImage(2), nullptr);
  EXPECT_EQ(ring.AcquireBufferForImage(2).bytes, nullptr);
  ring.Reset();
  DeliverInOrder(ring, 2);
  EXPECT_NE(ring.GetBufferForImage(2), nullptr);

  ring.Delete();
  EXPECT_EQ(ring.GetMinImageIndex(), 3u) << "none of two is there";
}

TEST(CircularBuffer, RefusesMemoryThatIsNoSlot)
{
  TCircularBuffer ring;
  unsigned char foreign[64] = {};
  EXPECT_FALSE(ring.PlaceNext(foreign));
  ASSERT_EQ(ring.Allocate(64, 4), 0);
  EXPECT_FALSE(ring.PlaceNext(foreign));
  EXPECT_FALSE(ring.IsSlot(foreign));
  EXPECT_FALSE(ring.IsSlot(ring.GetBuffer(1) + 8));
  EXPECT_TRUE(ring.IsSlot(ring.GetBuffer(4)));
}

/// A ring and the camera that fills its slots in order, as far ahead of the count as the test has it.
class ARunningRing : public ::testing::Test
{
protected:
  static constexpr std::uint64_t kFrameBytes = 64;
  static constexpr std::uint64_t kClockAt = kFrameBytes - 16;

  void Begin(std::uint64_t slots, bool slotsAreReused = true, bool framesHaveClock = true)
  {
    ASSERT_EQ(ring_.Allocate(kFrameBytes, slots), 0);
    ring_.SetKindOfRun(slotsAreReused, framesHaveClock);
    ring_.Reset();
    filled_ = 0;
  }

  unsigned char* NextSlot() { return ring_.GetBuffer(filled_ % ring_.GetBufferCount() + 1); }

  /// The camera fills slots; the clock goes up by 10 with each frame, or by @p step.
  void Fill(std::uint64_t frames, std::int64_t step = 10)
  {
    for (; frames > 0; --frames, ++filled_) {
      ticks_ += step;
      std::memset(NextSlot(), 7, kFrameBytes);
      std::memcpy(NextSlot() + kClockAt, &ticks_, sizeof ticks_);
    }
  }

  static TFrameTimestamp Timestamp(const unsigned char* slot)
  {
    TFrameTimestamp timestamp{slot + kClockAt};
    std::memcpy(&timestamp.ticks, timestamp.location, sizeof timestamp.ticks);
    return timestamp;
  }

  /// The library counts frames that the camera has filled.
  void Count(std::uint64_t frames, bool hasClock = true)
  {
    for (; frames > 0; --frames) {
      unsigned char* const slot = ring_.GetBuffer(ring_.GetMaxImageIndex() % ring_.GetBufferCount() + 1);
      ASSERT_TRUE(ring_.PlaceNext(slot, hasClock ? Timestamp(slot) : TFrameTimestamp{}));
      ring_.Increment();
    }
  }

  void FillAndCount(std::uint64_t frames, bool hasClock = true)
  {
    for (; frames > 0; --frames) {
      Fill(1);
      Count(1, hasClock);
    }
  }

  std::vector<std::uint64_t> IntactImages()
  {
    std::vector<std::uint64_t> images;
    for (std::uint64_t image = 1; image <= ring_.GetMaxImageIndex(); ++image)
      if (ring_.IsImageIntact(image, ring_.GetBufferForImage(image))) images.push_back(image);
    return images;
  }

  using TImages = std::vector<std::uint64_t>;
  TCircularBuffer ring_;
  std::uint64_t filled_ = 0;
  std::int64_t ticks_ = 1000;
};

TEST_F(ARunningRing, VouchesForImagesThatTheCameraHasNotReached)
{
  Begin(6);
  FillAndCount(4);
  EXPECT_EQ(IntactImages(), (TImages{1, 2, 3, 4}));
  EXPECT_EQ(ring_.GetTicks(4), 1040);
  Fill(1);
  EXPECT_EQ(IntactImages(), (TImages{1, 2, 3, 4})) << "a slot is left";
  Fill(1);
  EXPECT_EQ(IntactImages(), (TImages{3, 4})) << "image 1 is next, though four are counted";
  Fill(2);
  EXPECT_EQ(IntactImages(), TImages{}) << "images 1 and 2 are overwritten, and 3 is next";
  Count(4);
  EXPECT_EQ(IntactImages(), (TImages{5, 6, 7, 8}));
  Fill(6);
  EXPECT_EQ(IntactImages(), TImages{}) << "the camera is a whole ring ahead";

  // The next run gets the same memory, where everything is still in place.
  ticks_ = 1000;
  Begin(6);
  FillAndCount(3);
  EXPECT_EQ(IntactImages(), (TImages{1, 2, 3}));
  Fill(3);
  EXPECT_EQ(IntactImages(), (TImages{3}));
}

TEST_F(ARunningRing, VouchesInSmallRingsForAsMuchAsItCan)
{
  const struct
  {
    std::uint64_t slots;
    TImages afterFour;
    TImages whileTheNextIsComplete;
  } kCases[] = {{1, {}, {}}, {2, {4}, {}}, {3, {3, 4}, {4}}, {4, {3, 4}, {4}}};
  for (const auto& c : kCases) {
    Begin(c.slots);
    FillAndCount(4);
    EXPECT_EQ(IntactImages(), c.afterFour) << c.slots;
    Fill(1);
    EXPECT_EQ(IntactImages(), c.whileTheNextIsComplete) << c.slots;
  }
}

TEST_F(ARunningRing, VouchesAcrossFramesWithoutAClockValue)
{
  Begin(8);
  FillAndCount(2);
  Fill(2);
  Count(2, false);
  FillAndCount(2);
  EXPECT_EQ(IntactImages(), (TImages{1, 2, 3, 4, 5, 6}));
  EXPECT_EQ(ring_.GetTicks(3), std::nullopt);
  Fill(3);
  EXPECT_EQ(IntactImages(), TImages{6}) << "image 1 is overwritten, and images 3 and 4 cannot stand in for it";

  Begin(8);
  Fill(8, 0);
  Count(8);
  EXPECT_EQ(IntactImages(), TImages{}) << "a clock that stands still shows nothing";
}

TEST_F(ARunningRing, ASlotThatIsLostOrFilledInPartDoesNotHideTheCamera)
{
  Begin(6);
  FillAndCount(6);
  ++filled_; // image 1: nothing is put into its slot
  Fill(1);   // image 2 is overwritten
  EXPECT_EQ(IntactImages(), (TImages{5, 6})) << "image 3 may be next";

  // Frames that are shorter than their slots do not show that the last slot is unused.
  ASSERT_EQ(ring_.Allocate(2 * kFrameBytes, 6), 0);
  ring_.SetKindOfRun(true, true);
  ring_.Reset();
  filled_ = 0;
  FillAndCount(4);
  EXPECT_EQ(IntactImages(), (TImages{3, 4}));

  // An image whose slot has changed places shows nothing any more.
  Begin(6);
  FillAndCount(6);
  ASSERT_TRUE(ring_.PlaceNext(ring_.GetBuffer(3), Timestamp(ring_.GetBuffer(3))));
  ring_.Increment();
  EXPECT_EQ(IntactImages(), (TImages{6, 7}));
}

TEST_F(ARunningRing, WithoutClockValuesOnlyTheNewerHalfCountsAsIntact)
{
  for (const bool hasMetadata : {true, false}) {
    Begin(6, true, hasMetadata);
    FillAndCount(2, false);
    EXPECT_EQ(IntactImages(), (TImages{1, 2}));
    FillAndCount(6, false);
    EXPECT_EQ(IntactImages(), (TImages{6, 7, 8})) << hasMetadata;
    Begin(1, true, hasMetadata);
    FillAndCount(3, false);
    EXPECT_EQ(IntactImages(), TImages{});
  }
}

TEST_F(ARunningRing, ImagesWhoseSlotsAreNotUsedAgainStayIntact)
{
  for (const bool framesHaveClock : {true, false}) {
    Begin(3, false, framesHaveClock);
    FillAndCount(3);
    EXPECT_EQ(IntactImages(), (TImages{1, 2, 3}));
  }
}

TEST_F(ARunningRing, AnImageOfTheRunBeforeIsNotIntactInTheNext)
{
  Begin(4, false);
  FillAndCount(2);
  const TFrameMemory acquired = ring_.AcquireBufferForImage(2);
  EXPECT_EQ(acquired.sizeBytes, static_cast<std::int64_t>(kFrameBytes));
  EXPECT_TRUE(ring_.IsImageIntact(2, acquired.bytes));
  Begin(4, false);
  FillAndCount(2);
  EXPECT_FALSE(ring_.IsImageIntact(2, acquired.bytes));
  ring_.ReleaseBuffer(acquired.bytes);
}

TEST(CircularBuffer, WaitReportsCancelBeforeFailureBeforeFrame)
{
  TCircularBuffer ring;
  ASSERT_EQ(ring.Allocate(64, 4), 0);
  ring.Reset();
  EXPECT_EQ(ring.WaitChange(0), 2);
  DeliverInOrder(ring, 2);
  EXPECT_EQ(ring.WaitChange(0), 0) << "a frame from before the wait";
  EXPECT_EQ(ring.WaitChange(0), 2) << "and is reported once";

  ring.AcquisitionError();
  EXPECT_EQ(ring.WaitChange(0), 4);
  EXPECT_EQ(ring.WaitChange(0), 4) << "until the next run";
  ring.CancelWait();
  EXPECT_EQ(ring.WaitChange(0), 3);

  ring.Reset();
  EXPECT_EQ(ring.WaitChange(0), 2);
  DeliverInOrder(ring, 1);
  ring.Reset();
  EXPECT_EQ(ring.WaitChange(0), 2) << "a frame of the run before";
}

// The next run begins, with its frame, before any waiter has had time to look.
TEST(CircularBuffer, EveryWaitUnderWayIsEndedThoughTheNextRunBeginsAtOnce)
{
  constexpr int kWaiters = 8;
  for (int round = 0; round < 20; ++round)
    for (const int expected : {3, 4}) {
      TCircularBuffer ring;
      ASSERT_EQ(ring.Allocate(64, 4), 0);
      ring.Reset();
      std::vector<std::thread> waiters;
      std::array<std::atomic<pid_t>, kWaiters> ids{};
      std::atomic<int> ended{0};
      waiters.reserve(ids.size());
      for (std::atomic<pid_t>& id : ids)
        waiters.emplace_back([&] {
          id = gettid();
          ended += ring.WaitChange(kLongMs) == expected;
        });
      for (const std::atomic<pid_t>& id : ids) {
        ASSERT_TRUE(system_calls::Eventually([&] { return id != 0; }));
        ASSERT_TRUE(system_calls::EventuallyAsleep(id));
      }
      expected == 3 ? ring.CancelWait() : ring.AcquisitionError();
      ring.Reset();
      DeliverInOrder(ring, 1);
      EXPECT_EQ(ring.WaitChange(kLongMs), 0) << "the frame is for the waits of its run";
      for (std::thread& waiter : waiters) waiter.join();
      ASSERT_EQ(ended, kWaiters) << "round " << round;
      EXPECT_EQ(ring.WaitChange(0), 2);
    }
}

TEST(CircularBuffer, AWaitGoesOnIntoTheNextRunWhenNothingHasEndedIt)
{
  TCircularBuffer ring;
  ASSERT_EQ(ring.Allocate(64, 4), 0);
  ring.Reset();
  std::atomic<pid_t> id{0};
  std::atomic<int> result{-1};
  std::thread waiter([&] {
    id = gettid();
    result = ring.WaitChange(kLongMs);
  });
  ASSERT_TRUE(system_calls::Eventually([&] { return id != 0; }));
  EXPECT_TRUE(system_calls::EventuallyAsleep(id));
  ring.Reset();
  DeliverInOrder(ring, 1);
  waiter.join();
  EXPECT_EQ(result, 0);
}

TEST(CircularBuffer, FailuresAtTheEdgeOfATimeOutAreNotLost)
{
  for (const int expected : {3, 4}) {
    TCircularBuffer ring;
    ring.Reset();
    system_calls::Directed system;
    system.atTheEdgeOfTimeout = [&] { expected == 3 ? ring.CancelWait() : ring.AcquisitionError(); };
    EXPECT_EQ(ring.WaitChange(1), 2);
    system.atTheEdgeOfTimeout = nullptr;
    EXPECT_EQ(ring.WaitChange(kLongMs), expected);
  }
}

TEST(CircularBuffer, ClosedWaitsStayClosedInANewRun)
{
  TCircularBuffer ring;
  ring.CloseWaits();
  ring.Reset();
  EXPECT_EQ(ring.WaitChange(0), 3);
  EXPECT_EQ(ring.WaitChange(QuorinUtility::TQuorinEvent::Infinite), 3);
}

TEST(CircularBuffer, MemoryThatTheCameraMayWriteIntoIsKept)
{
  TCircularBuffer ring;
  ASSERT_EQ(ring.Allocate(64, 2), 0);
  unsigned char* const slot = ring.GetBuffer(1);
  for (int start = 0; start < 3; ++start) {
    ring.PinMemory();
    ASSERT_EQ(ring.Allocate(64, 2), 0);
    EXPECT_EQ(ring.GetBuffer(1), slot) << "a ring of the same shape needs no new memory";
  }
  ASSERT_EQ(ring.Allocate(64, 3), 0);
  EXPECT_FALSE(ring.PlaceNext(slot)) << "what the camera still puts there is no image";
  ring.Delete();
  EXPECT_EQ(msync(slot, 1, MS_ASYNC), 0) << "still mapped";
  ring.UnpinMemory();
  EXPECT_EQ(msync(slot, 1, MS_ASYNC), -1) << "not mapped any more";
}

TEST(CircularBuffer, MemoryThatTheMachineDoesNotHaveIsRefused)
{
  struct sysinfo small
  {
  };
  small.freeram = 300000000;
  small.mem_unit = 1;
  system_calls::Directed system;
  system.memory = &small;
  TCircularBuffer ring;
  EXPECT_EQ(ring.Allocate(4000000, 100), 1);
  EXPECT_EQ(ring.GetBufferCount(), 0u);
  EXPECT_EQ(ring.Allocate(4000000, 75), 0);

  small.freeram = 0;
  EXPECT_EQ(ring.Allocate(4000000, 75), 0) << "memory that it has already counts as free";
  EXPECT_EQ(ring.Allocate(4000000, 74), 1);
}

/// A machine with this much memory, all of it available.
struct sysinfo MachineWith(unsigned long bytes)
{
  struct sysinfo memory = {};
  memory.totalram = bytes;
  memory.freeram = bytes;
  memory.mem_unit = 1;
  return memory;
}

TEST(RingMemory, RingsOfSeveralCamerasShareABudgetAndASingleOneHasNone)
{
  constexpr std::uint64_t kFrame = 1000000;
  const struct sysinfo machine = MachineWith(1000 * kFrame);
  system_calls::Directed system;
  system.memory = &machine; // 750 frames for the rings of all cameras
  TCircularBuffer one;
  TCircularBuffer two;
  TCircularBuffer other;
  for (TCircularBuffer* const ring : {&one, &two}) ring->SetSharesBudget(true);
  ASSERT_EQ(one.Allocate(kFrame, 900), 0) << "it is alone";
  EXPECT_EQ(two.Allocate(kFrame, 1), 1);
  ASSERT_EQ(one.Allocate(kFrame, 400), 0);
  one.Delete();
  ASSERT_EQ(one.Allocate(kFrame, 400), 0);
  ASSERT_EQ(two.Allocate(kFrame, 350), 0);
  EXPECT_EQ(one.BytesOfOtherRings(), 350 * kFrame);
  EXPECT_EQ(one.Allocate(kFrame, 400), 0) << "memory that it has already is its own";
  EXPECT_EQ(one.Allocate(kFrame, 399), 0) << "the earlier ring is freed when there is no room for both";
  EXPECT_EQ(two.Allocate(kFrame, 352), 1);
  EXPECT_EQ(other.Allocate(kFrame, 400), 0) << "without the budget";
  EXPECT_EQ(two.Allocate(kFrame, 350), 1) << "but counted in that of the others";
  other.Delete();
  EXPECT_EQ(two.Allocate(kFrame, 350), 0);
}

TEST(RingMemory, AStartBeyondTheBudgetIsRefusedWithNumbersIfCamerasAreIndependent)
{
  const struct sysinfo machine = MachineWith(800000000);
  system_calls::Directed system;
  system.memory = &machine;
  ASSERT_EQ(VXSIM_Configure("[Simulator]\nCameras=2\n[Camera0]\nSource=manual\n[Camera1]\nSource=manual\n"
                            "[Faults]\nRule=value ImageSizeBytes set 60000000\n"),
            VX_SUCCESS);
  ASSERT_EQ(VX_InitialiseLibrary(), VX_SUCCESS);
  int devices[2] = {};
  for (const int index : {0, 1}) ASSERT_EQ(VX_Open(index, &devices[index]), VX_SUCCESS);
  for (const bool independent : {false, true}) {
    ASSERT_TRUE(TRunCamera::SetIndependent(independent));
    QuorinUtility::TQuorinCriticalSection locks[2];
    TVxmcdAcquisitionManager one(&locks[0], devices[0]);
    TVxmcdAcquisitionManager two(&locks[1], devices[1]);
    ASSERT_EQ(one.Start(), TVxmcdAcquisitionManager::kDone);
    const std::string logged = LoggedBy([&] {
      EXPECT_EQ(two.Start(),
                independent ? TVxmcdAcquisitionManager::kStartFailed : TVxmcdAcquisitionManager::kDone);
    });
    EXPECT_EQ(
        logged.find("no memory for 6 frames of 60000000 bytes: 360000000 bytes wanted, 800000000 available; rings "
                    "of other cameras have 360000000, and independent cameras may have 600000000 together") !=
            std::string::npos,
        independent)
        << logged;
    one.Stop();
    two.Stop();
  }
  EXPECT_TRUE(TRunCamera::SetIndependent(false));
  for (const int device : devices) VX_Close(device);
  VX_FinaliseLibrary();
  VXSIM_Configure(nullptr);
}

} // namespace
