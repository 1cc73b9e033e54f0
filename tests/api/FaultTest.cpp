// SPDX-License-Identifier: MIT
// What programs see of a camera that fails in one particular way.
#include "tests/support/CounterCameraTest.h"
#include "tests/support/DocumentedCodes.h"
#include "tests/support/ProcessFigures.h"
#include "tests/support/Sanitizers.h"

#include <algorithm>
#include <chrono>
#include <fstream>
#include <numeric>
#include <sys/resource.h>
#include <unistd.h>

namespace {

constexpr int kWaitMs = 10000; // longer than any limit that is waited for here

std::vector<std::uint64_t> FramesFrom1(std::size_t count)
{
  std::vector<std::uint64_t> frames(count);
  std::iota(frames.begin(), frames.end(), std::uint64_t{1});
  return frames;
}

unsigned long AddressBytes()
{
  unsigned long pages = 0;
  std::ifstream("/proc/self/statm") >> pages;
  return pages * static_cast<unsigned long>(sysconf(_SC_PAGESIZE));
}

double SecondsSince(std::chrono::steady_clock::time_point start)
{
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

} // namespace

class Fault : public CounterCameraTest
{
protected:
  static void ExpectOpensAndRuns()
  {
    ASSERT_EQ(Initialize(nullptr), RC_SUCCESS);
    ExpectCleanRun();
    ASSERT_EQ(ShutDown(), RC_SUCCESS);
    EXPECT_EQ(VXSIM_GetInitialiseCount(), 0);
  }

  /// A refused start takes every buffer back and leaves no image.
  static void ExpectStartRefused()
  {
    EXPECT_EQ(StartAcquisition(), RC_FRAME_UNAVAILABLE);
    EXPECT_EQ(Statistics().buffersHeld, 0U);
    EXPECT_EQ(ImageCount(), 0);
    EXPECT_EQ(Status(), RC_IDLE);
  }

  /// Waits until the run has failed: a blocked wait must come back, and later ones at once.
  static void ExpectRunFails(int status)
  {
    while (WaitForAcquisitionTimeOut(kWaitMs) == RC_SUCCESS) {
    }
    EXPECT_TRUE(Eventually([] { return Status() != RC_ACQUIRING; }));
    EXPECT_EQ(Status(), status);
    EXPECT_EQ(WaitForAcquisition(), RC_NO_NEW_DATA);
  }
};

TEST_F(Fault, FailedInitialisationWhileACameraIsOpenDoesNotCloseIt)
{
  ASSERT_EQ(Initialize(nullptr), RC_SUCCESS);
  AddFault("call VX_InitialiseLibrary at 1 rc 54");
  long count = 0;
  EXPECT_EQ(GetAvailableCameras(&count), RC_SUCCESS);
  EXPECT_EQ(count, 1);
  EXPECT_EQ(VXSIM_GetOpenCount(), 1);
  ExpectCleanRun();
}

TEST_F(Fault, ImpossibleFrameSizesRefuseTheStart)
{
  ASSERT_EQ(Initialize(nullptr), RC_SUCCESS);
  for (const char* rule : {"call VX_GetInt feature ImageSizeBytes rc 53", "value ImageSizeBytes set 0",
                           "value ImageSizeBytes set -1", "value ImageSizeBytes set -9223372036854775808",
                           "value ImageSizeBytes set 2147483648", "value ImageSizeBytes set 9223372036854775807",
                           // The camera does not take buffers that are too small.
                           "value ImageSizeBytes set 1"}) {
    SCOPED_TRACE(rule);
    for (const int mode : {kModeSingle, kModeUntilAborted}) {
      ASSERT_EQ(SetAcquisitionMode(mode), RC_SUCCESS);
      AddFault(rule);
      ExpectStartRefused();
      VXSIM_ClearFaults();
    }
  }
  ExpectCleanRun();
}

TEST_F(Fault, FrameLargerThanTheRingStillHasItsSlotInASeries)
{
  ASSERT_EQ(Initialize(nullptr), RC_SUCCESS);
  AddFault("value ImageSizeBytes set 300000001");
  StartSeries(2);
  Push(2);
  ASSERT_TRUE(HasImages(2));
  ExpectImages({1, 2});
  EXPECT_TRUE(Eventually([] { return Status() == RC_IDLE; }));

  StartUntilAborted();
  Push(4);
  ASSERT_TRUE(HasImages(4));
  ExpectImages({1, 2, 3, 4});
  int first = 0;
  int last = 0;
  EXPECT_EQ(GetNumberAvailableImages(&first, &last), RC_SUCCESS);
  EXPECT_EQ(last - first + 1, 3) << "a ring that is used again has three slots";
  ExpectCleanRun();
}

TEST_F(Fault, FrameLargerThanTheRingHasTwoSlotsOrIsRefusedWhenMemoryIsShort)
{
  if (kHasSanitizer) GTEST_SKIP() << "a sanitizer takes more addresses than can be limited";
  ASSERT_EQ(Initialize(nullptr), RC_SUCCESS);
  ASSERT_EQ(SetAcquisitionMode(kModeUntilAborted), RC_SUCCESS);
  AddFault("value ImageSizeBytes set 500000000");
  rlimit before{};
  ASSERT_EQ(getrlimit(RLIMIT_AS, &before), 0);
  const struct
  {
    unsigned long moreBytes;
    unsigned int code;
  } kCases[] = {{1300000000, RC_SUCCESS}, {800000000, RC_FRAME_UNAVAILABLE}};
  for (const auto& c : kCases) {
    FreeInternalMemory();
    rlimit limit = before;
    limit.rlim_cur = AddressBytes() + c.moreBytes;
    ASSERT_EQ(setrlimit(RLIMIT_AS, &limit), 0);
    const unsigned int code = StartAcquisition();
    setrlimit(RLIMIT_AS, &before);
    ASSERT_EQ(code, c.code) << c.moreBytes;
    if (code != RC_SUCCESS) continue;
    Push(4);
    ASSERT_TRUE(HasImages(4));
    int first = 0;
    int last = 0;
    EXPECT_EQ(GetNumberAvailableImages(&first, &last), RC_SUCCESS);
    EXPECT_EQ(last - first + 1, 2);
    EXPECT_EQ(AbortAcquisition(), RC_SUCCESS);
  }
  ExpectCleanRun();
}

TEST_F(Fault, RefusedSlotOrStartCommandRefusesTheStartAndFreesTheRing)
{
  ASSERT_EQ(Initialize(nullptr), RC_SUCCESS);
  for (const int mode : {kModeSingle, kModeUntilAborted}) {
    ASSERT_EQ(SetAcquisitionMode(mode), RC_SUCCESS);
    for (const char* rule :
         {"call VX_QueueBuffer at 1 rc 54", "call VX_QueueBuffer at 2 rc 51", "call VX_QueueBuffer at 2500 rc 54",
          "call VX_QueueBuffer at 5000 rc 52", "call VX_Command feature AcquisitionStart rc 37"}) {
      SCOPED_TRACE(rule);
      AddFault(rule);
      ExpectStartRefused();
      VXSIM_ClearFaults();
    }
  }
  ExpectCleanRun();
}

TEST_F(Fault, OtherAnswersToTheStartCommandEndInATimeOut)
{
  ASSERT_EQ(Initialize(nullptr), RC_SUCCESS);
  ExposeBriefly();
  AddFault("call VX_Command feature AcquisitionStart rc 54");
  StartUntilAborted();
  EXPECT_EQ(Status(), RC_ACQUIRING);
  ExpectRunFails(RC_STATUS_TIMED_OUT);
  EXPECT_EQ(AbortAcquisition(), RC_IDLE);
  ExpectCleanRun();
}

TEST_F(Fault, StallBeyondTheLimitEndsTheRunAndStopsTheCamera)
{
  ASSERT_EQ(Initialize(nullptr), RC_SUCCESS);
  ExposeBriefly();
  StartUntilAborted();
  Push(2);
  ASSERT_TRUE(HasImages(2));
  VXSIM_StartCallLog(0);
  ExpectRunFails(RC_STATUS_TIMED_OUT);
  ExpectImages({1, 2});
  EXPECT_TRUE(Eventually([] { // the status shows the failure before the thread has stopped the camera
    const std::vector<std::string> calls = LoggedCalls();
    return std::find(calls.begin(), calls.end(), "VX_Command AcquisitionStop -> 0") != calls.end();
  }));
  ExpectCleanRun();
}

TEST_F(Fault, ThreadThatHangsInTheCameraKeepsItsMemoryAndRefusesANewRun)
{
  ASSERT_EQ(Initialize(nullptr), RC_SUCCESS);
  StartUntilAborted();
  Push(3);
  ASSERT_TRUE(HasImages(3));
  AddFault("call VX_WaitBuffer at 1 delay 11s");
  ASSERT_TRUE(Eventually([] { return VXSIM_GetFaultsFired() > 0; }));
  EXPECT_EQ(StartAcquisition(), RC_FRAME_UNAVAILABLE);
  ExpectImages({1, 2, 3});
  ASSERT_TRUE(Eventually([] { return Status() == RC_IDLE; }));
  ExpectCleanRun();
}

TEST_F(Fault, WrongReportedSizesDoNotMoveOtherImages)
{
  ASSERT_EQ(Initialize(nullptr), RC_SUCCESS);
  for (const int metadata : {0, 1}) {
    ASSERT_EQ(SetMetaData(metadata), RC_SUCCESS);
    VXSIM_ClearFaults();
    AddFault(kFiveSlots);
    for (const char* rule : {"frame 2 short 16", "frame 3 short 0", "frame 5 short -2147483648", "frame 6 short 7",
                             "frame 7 oversize 64", "frame 9 oversize 2147480000"})
      AddFault(rule);
    StartUntilAborted();
    for (std::size_t frame = 1; frame <= 24; ++frame) {
      Push(1);
      ASSERT_TRUE(HasImages(static_cast<long>(frame)));
      ExpectImages(FramesFrom1(frame));
    }
    ASSERT_EQ(AbortAcquisition(), RC_SUCCESS);
  }
  VXSIM_ClearFaults();
  ExpectCleanRun();
}

TEST_F(Fault, BuffersThatAreMissingForeignSwappedOrRepeatedKeepImageNumbersTrue)
{
  struct TCase
  {
    const char* rule;
    std::vector<std::uint64_t> begin; // what the first images are
    std::uint64_t next;               // the frame after them
  };
  const TCase cases[] = {{"frame 3 null", {1, 2}, 4},
                         {"frame 3 foreign", {1, 2}, 4},
                         {"frame 3 swap 2", {1, 2, 3}, 4},
                         {"frame 4 swap 5", {1, 2, 3, 4}, 5},
                         {"frame 3 repeat", {1, 2, 2}, 4}};
  ASSERT_EQ(Initialize(nullptr), RC_SUCCESS);
  for (const TCase& testCase : cases) {
    SCOPED_TRACE(testCase.rule);
    AddFault(kFiveSlots);
    AddFault(testCase.rule);
    StartUntilAborted();
    std::vector<std::uint64_t> frames = testCase.begin;
    Push(static_cast<int>(testCase.next) - 1);
    for (std::uint64_t frame = testCase.next; frame <= testCase.next + 4 * kFiveSlotsCount; ++frame) {
      ASSERT_TRUE(HasImages(static_cast<long>(frames.size())));
      ExpectImages(frames);
      Push(1);
      frames.push_back(frame);
    }
    ASSERT_EQ(AbortAcquisition(), RC_SUCCESS);
    VXSIM_ClearFaults();
  }
  ExpectCleanRun();
}

TEST_F(Fault, SlotsThatDoNotGoBackShrinkTheRingButKeepTheOrder)
{
  ASSERT_EQ(Initialize(nullptr), RC_SUCCESS);
  AddFault(kFiveSlots);
  StartUntilAborted();
  AddFault("call VX_QueueBuffer at 2 rc 54");
  AddFault("call VX_QueueBuffer at 9 rc 54");
  for (std::size_t frame = 1; frame <= 30; ++frame) {
    Push(1);
    ASSERT_TRUE(HasImages(static_cast<long>(frame)));
    ExpectImages(FramesFrom1(frame));
  }
}

TEST_F(Fault, RingThatGetsNoSlotBackTimesOut)
{
  ASSERT_EQ(Initialize(nullptr), RC_SUCCESS);
  ExposeBriefly();
  AddFault(kFiveSlots);
  StartUntilAborted();
  AddFault("call VX_QueueBuffer rc 54");
  Push(8);
  ExpectRunFails(RC_STATUS_TIMED_OUT);
  ASSERT_EQ(ImageCount(), kFiveSlotsCount);
  ExpectImages(FramesFrom1(kFiveSlotsCount));
  ExpectCleanRun();
}

TEST_F(Fault, UnpluggedCameraEndsABlockedWaitAndCostsNoProcessorTime)
{
  ASSERT_EQ(Initialize(nullptr), RC_SUCCESS);
  ExposeBriefly();
  StartUntilAborted();
  Push(4);
  ASSERT_TRUE(HasImages(4));
  const auto start = std::chrono::steady_clock::now();
  const double processorBefore = ProcessorSeconds();
  VXSIM_SetPlugged(0, 0);
  ExpectRunFails(RC_STATUS_TIMED_OUT);
  const double seconds = SecondsSince(start);
  EXPECT_LT(seconds, 5.0); // the limit is a little over 1 s
  EXPECT_LT(ProcessorSeconds() - processorBefore, seconds * (kHasSanitizer ? 0.3 : 0.05));
  EXPECT_NE(GetNumberAvailableImages(nullptr, nullptr), RC_SUCCESS);
  EXPECT_EQ(ImageCount(), 4);

  VXSIM_SetPlugged(0, 1);
  ExpectCleanRun();
}

TEST_F(Fault, CameraThatDeniesAcquiringIsClosedAllTheSame)
{
  ASSERT_EQ(Initialize(nullptr), RC_SUCCESS);
  StartUntilAborted();
  AddFault("value CameraAcquiring set 0");
  EXPECT_EQ(AbortAcquisition(), RC_IDLE);
  EXPECT_EQ(Status(), RC_ACQUIRING);
  EXPECT_EQ(ShutDown(), RC_SUCCESS);
  VXSIM_ClearFaults();
  ExpectOpensAndRuns();
}

TEST_F(Fault, AbortEndsWhenWaitsAlwaysSucceed)
{
  ASSERT_EQ(Initialize(nullptr), RC_SUCCESS);
  AddFault("call VX_WaitBuffer rc 0");
  StartUntilAborted();
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(AbortAcquisition(), RC_SUCCESS);
  EXPECT_LT(SecondsSince(start), 5.0);
  EXPECT_EQ(ImageCount(), 0);
  ExpectCleanRun();
}

TEST_F(Fault, BuffersThatTheCameraKeepsAreNotFreedUnderIt)
{
  // The slots of the first run stay queued, and the frames of the next run go into them: whether the camera says that
  // it has not flushed, or that it has.
  for (const char* rule : {"call VX_Flush rc 54", "call VX_Flush rc 0"}) {
    SCOPED_TRACE(rule);
    ASSERT_EQ(Initialize(nullptr), RC_SUCCESS);
    AddFault(rule);
    StartSeries(1);
    Push(1);
    ASSERT_TRUE(Eventually([] { return Status() == RC_IDLE; }));
    ASSERT_EQ(SetImage(1, 1, 1, 16, 1, 4), RC_SUCCESS); // smaller frames, so that the ring gets another shape
    StartUntilAborted();
    Push(100);
    EXPECT_TRUE(Eventually([] { return Statistics().framesDelivered == 101; }));
    EXPECT_EQ(ImageCount(), 0); // they are not frames of this run's ring
    EXPECT_EQ(FreeInternalMemory(), RC_SUCCESS);
    EXPECT_EQ(AbortAcquisition(), RC_SUCCESS);
    EXPECT_EQ(ShutDown(), RC_SUCCESS);
    VXSIM_ClearFaults();
    ExpectOpensAndRuns();
    if (HasFailure()) return;
  }
}

TEST_F(Fault, DamagedMetadataCostsATimestampAndNoFrame)
{
  ASSERT_EQ(Initialize(nullptr), RC_SUCCESS);
  std::vector<std::string> damages = {"truncated", "len 0", "len 4294967295", "cid 7"};
  for (int seed = 1; seed <= 40; ++seed) damages.push_back("random " + std::to_string(seed));
  for (const std::string& damage : damages) {
    SCOPED_TRACE(damage);
    AddFault(("chunk 2 " + damage).c_str());
    StartSeries(3);
    Push(3);
    ASSERT_TRUE(HasImages(3));
    ExpectImages({1, 2, 3});
    ASSERT_TRUE(Eventually([] { return Status() == RC_IDLE; }));
    unsigned int count = 0;
    long long first = -1;
    long long last = -1;
    ASSERT_EQ(vxsys_GetRawMetaDataInfo(&count, &first, 0), RC_SUCCESS);
    ASSERT_TRUE(count == 2 || count == 3) << count;
    ASSERT_EQ(vxsys_GetRawMetaDataInfo(&count, &last, count - 1), RC_SUCCESS);
    EXPECT_GT(last, first); // of frame 1 and frame 3, which are whole
    VXSIM_ClearFaults();
  }
}

/// What every function that takes images answers for one size and untouched arrays.
class GeometryFault : public Fault
{
protected:
  static constexpr std::size_t kRoom = 1U << 20;
  static constexpr unsigned char kCanary = 0xA5;

  void ExpectNothingCopied(unsigned long size)
  {
    Expect(GetAcquiredData16(words_.data(), size), "GetAcquiredData16");
    Expect(GetOldestImage16(words_.data(), size), "GetOldestImage16");
    Expect(GetMostRecentImage16(words_.data(), size), "GetMostRecentImage16");
    long first = 0;
    long last = 0;
    Expect(GetImages16(1, 1, words_.data(), size, &first, &last), "GetImages16");
    auto* const wide = reinterpret_cast<int*>(words_.data());
    Expect(GetAcquiredData(wide, size), "GetAcquiredData");
    Expect(GetOldestImage(wide, size), "GetOldestImage");
    Expect(GetMostRecentImage(wide, size), "GetMostRecentImage");
    Expect(GetImages(1, 1, wide, size, &first, &last), "GetImages");
  }

private:
  void Expect(unsigned int code, const char* name)
  {
    EXPECT_TRUE(IsDocumented(name, code)) << name << " answered " << code;
    constexpr auto kUntouched = static_cast<unsigned short>(kCanary * 0x101);
    EXPECT_TRUE(std::all_of(words_.begin(), words_.end(), [](unsigned short w) { return w == kUntouched; }))
        << name << " has written";
  }

  std::vector<unsigned short> words_ =
      std::vector<unsigned short>(kRoom, static_cast<unsigned short>(kCanary * 0x101));
};

TEST_F(GeometryFault, ImagesOfAnotherGeometryAreNotReadBeyondTheirEnd)
{
  ASSERT_EQ(Initialize(nullptr), RC_SUCCESS);
  StartSeries(5);
  Push(5);
  ASSERT_TRUE(HasImages(5));
  ASSERT_TRUE(Eventually([] { return Status() == RC_IDLE; }));

  ASSERT_EQ(SetImage(1, 1, 1, 512, 1, 512), RC_SUCCESS);
  ExpectNothingCopied(512UL * 512UL);
  ASSERT_EQ(SetImage(1, 1, 1, 16, 1, 8), RC_SUCCESS);
  for (const char* rule : {"value AOIStride set 0", "value AOIStride set -32", "value AOIStride set 2147483647",
                           "value AOIStride set 9223372036854775807", "call VX_GetInt feature AOIStride rc 53"}) {
    SCOPED_TRACE(rule);
    AddFault(rule);
    ExpectNothingCopied(kCounterPixels);
    VXSIM_ClearFaults();
  }
  for (const char* rule :
       {"value AOIWidth set 0", "value AOIHeight set -1", "call VX_GetInt feature AOIWidth rc 53",
        "value AOIWidth set 2147483647", "value AOIHeight set 536870912"}) {
    SCOPED_TRACE(rule);
    AddFault(rule);
    ExpectNothingCopied(0);
    ExpectNothingCopied(kCounterPixels);
    VXSIM_ClearFaults();
  }
  ExpectImages(FramesFrom1(5));
}
