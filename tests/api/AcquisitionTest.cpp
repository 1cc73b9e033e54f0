// SPDX-License-Identifier: MIT
// Runs: what a start asks of the camera, how a run ends, and what status, waits and progress say meanwhile.
#include "tests/support/SimulatedCameraTest.h"

#include <algorithm>
#include <atomic>
#include <thread>

namespace {

class Acquisition : public SimulatedCameraTest
{
protected:
  static std::ptrdiff_t QueuedSlots()
  {
    std::ptrdiff_t queued = 0;
    for (std::size_t index = 0; index < VXSIM_GetCallCount(); ++index) {
      char line[128] = {};
      VXSIM_GetCall(index, line, sizeof line);
      queued += std::string(line).rfind("VX_QueueBuffer", 0) == 0;
    }
    return queued;
  }

  /// Slots that a start queues for images of width x height pixels of 16 bits.
  std::ptrdiff_t SlotsFor(int mode, int kinetics, int width, int height)
  {
    SetArea(width, height);
    SetAcquisitionMode(mode);
    SetNumberKinetics(kinetics);
    VXSIM_StartCallLog(0);
    EXPECT_EQ(StartAcquisition(), RC_SUCCESS);
    VXSIM_StopCallLog();
    AbortAcquisition();
    return QueuedSlots();
  }

  static constexpr int kLongMs = 20000;
};

TEST_F(Acquisition, StartAsksTheCameraInAFixedOrder)
{
  Open();
  SetAcquisitionMode(5);
  VXSIM_StartCallLog(0);
  ASSERT_EQ(StartAcquisition(), RC_SUCCESS);
  VXSIM_StopCallLog();
  std::vector<std::string> calls = LoggedCalls();
  calls.erase(std::remove_if(calls.begin(), calls.end(),
                             [](const std::string& c) { return c.rfind("VX_GetEnumeratedString", 0) == 0; }),
              calls.end());
  EXPECT_EQ(calls, (std::vector<std::string>{
                       "VX_GetInt ImageSizeBytes -> 0", "VX_GetEnumerated TriggerMode -> 0",
                       "VX_GetFloat FrameRate -> 0", "VX_GetInt AccumulateCount -> 0",
                       "VX_Command AcquisitionStop -> 0", "VX_Flush -> 0", "VX_GetBool MetadataEnable -> 0",
                       "VX_Command TimestampClockReset -> 0", "VX_Command AcquisitionStart -> 0"}));
}

TEST_F(Acquisition, RingHasTheBudgetAndFiniteRunsASlotForEachFrame)
{
  Open();
  SetMetaData(0);
  EXPECT_EQ(SlotsFor(5, 1, 16, 8), 5000) << "limited";
  EXPECT_EQ(SlotsFor(1, 1, 16, 8), 5001);
  EXPECT_EQ(SlotsFor(3, 10, 16, 8), 5010);
  EXPECT_EQ(SlotsFor(5, 1, 512, 512), 300000000 / (512 * 512 * 2)) << "16 bits a pixel";
  long budget = 0;
  EXPECT_EQ(GetSizeOfCircularBuffer(&budget), RC_SUCCESS);
  EXPECT_EQ(budget, 300000000);
}

TEST_F(Acquisition, FiniteRunEndsByItselfAndKeepsEveryImage)
{
  Open();
  SetAcquisitionMode(3);
  SetNumberKinetics(3);
  EXPECT_EQ(Status(), RC_IDLE);
  ASSERT_EQ(StartAcquisition(), RC_SUCCESS);
  EXPECT_EQ(Status(), RC_ACQUIRING);
  PushFrames(3);
  EXPECT_TRUE(Eventually([] { return Status() == RC_IDLE; }));
  EXPECT_EQ(AbortAcquisition(), RC_IDLE);
  int first = 0;
  int last = 0;
  EXPECT_EQ(GetNumberAvailableImages(&first, &last), RC_SUCCESS);
  EXPECT_EQ(first, 1);
  EXPECT_EQ(last, 3);
}

TEST_F(Acquisition, EachFrameEndsOneWait)
{
  Open();
  SetAcquisitionMode(5);
  ASSERT_EQ(StartAcquisition(), RC_SUCCESS);
  EXPECT_EQ(WaitForAcquisitionTimeOut(0), RC_NO_NEW_DATA);
  for (int frame = 0; frame < 3; ++frame) {
    PushFrames(1);
    EXPECT_EQ(WaitForAcquisitionTimeOut(kLongMs), RC_SUCCESS);
  }
  PushFrames(2);
  EXPECT_EQ(WaitForAcquisition(), RC_SUCCESS);
  EXPECT_EQ(WaitForAcquisitionByHandleTimeOut(101, 0), RC_NO_NEW_DATA) << "both frames came before that wait";
  EXPECT_EQ(WaitForAcquisitionByHandleTimeOut(-1, 0), RC_NOT_INITIALIZED);
  EXPECT_EQ(WaitForAcquisitionByHandle(102), RC_NOT_INITIALIZED);
}

TEST_F(Acquisition, CancelEndsEveryWaitUntilTheNextStart)
{
  Open();
  SetAcquisitionMode(5);
  ASSERT_EQ(StartAcquisition(), RC_SUCCESS);
  std::atomic<int> released{0};
  std::vector<std::thread> waiters;
  for (int waiter = 0; waiter < 4; ++waiter)
    waiters.emplace_back([&] { released += WaitForAcquisition() == RC_NO_NEW_DATA; });
  EXPECT_EQ(CancelWait(), RC_SUCCESS);
  for (std::thread& waiter : waiters) waiter.join();
  EXPECT_EQ(released, 4);
  EXPECT_EQ(WaitForAcquisition(), RC_NO_NEW_DATA);

  ASSERT_EQ(StartAcquisition(), RC_SUCCESS);
  PushFrames(1);
  EXPECT_EQ(WaitForAcquisitionTimeOut(kLongMs), RC_SUCCESS);
}

TEST_F(Acquisition, ProgressCountsImagesUntilTheSeriesIsComplete)
{
  Open();
  long accumulations = -1;
  long series = -1;
  EXPECT_EQ(GetAcquisitionProgress(&accumulations, &series), RC_SUCCESS);
  EXPECT_EQ(series, 0);
  SetAcquisitionMode(3);
  SetNumberKinetics(5);
  ASSERT_EQ(StartAcquisition(), RC_SUCCESS);
  PushFrames(4);
  EXPECT_EQ(GetAcquisitionProgress(&accumulations, &series), RC_SUCCESS);
  EXPECT_EQ(accumulations, 0);
  EXPECT_EQ(series, 4);
  PushFrames(1);
  GetAcquisitionProgress(nullptr, &series);
  EXPECT_EQ(series, 0);
}

TEST_F(Acquisition, FailureStaysInTheStatusUntilTheNextStart)
{
  Open();
  SetAcquisitionMode(5);
  ASSERT_EQ(StartAcquisition(), RC_SUCCESS);
  ASSERT_EQ(VXSIM_PushWaitCode(0, VX_ERR_HARDWARE_OVERFLOW), VX_SUCCESS);
  EXPECT_EQ(WaitForAcquisitionTimeOut(kLongMs), RC_NO_NEW_DATA);
  EXPECT_TRUE(Eventually([] { return Status() == RC_STATUS_HARDWARE_OVERFLOW; }));

  ASSERT_EQ(StartAcquisition(), RC_SUCCESS);
  EXPECT_EQ(Status(), RC_ACQUIRING);
}

TEST_F(Acquisition, MemoryIsFreedAtOnceOrAtTheEndOfTheRun)
{
  Open();
  SetAcquisitionMode(5);
  ASSERT_EQ(StartAcquisition(), RC_SUCCESS);
  PushFrames(2);
  EXPECT_EQ(FreeInternalMemory(), RC_SUCCESS);
  std::vector<unsigned short> image(16 * 8);
  EXPECT_EQ(GetMostRecentImage16(image.data(), image.size()), RC_SUCCESS) << "the run goes on";
  EXPECT_EQ(image[0], 0x0202);
  ASSERT_EQ(AbortAcquisition(), RC_SUCCESS);
  EXPECT_EQ(GetMostRecentImage16(image.data(), image.size()), RC_FRAME_UNAVAILABLE);

  ASSERT_EQ(StartAcquisition(), RC_SUCCESS);
  PushFrames(1);
  ASSERT_EQ(AbortAcquisition(), RC_SUCCESS);
  EXPECT_EQ(GetMostRecentImage16(image.data(), image.size()), RC_SUCCESS);
  EXPECT_EQ(FreeInternalMemory(), RC_SUCCESS);
  EXPECT_EQ(GetMostRecentImage16(image.data(), image.size()), RC_FRAME_UNAVAILABLE);
}

TEST_F(Acquisition, AbortAnswersWhatTheCameraAnswers)
{
  Open();
  EXPECT_EQ(AbortAcquisition(), RC_IDLE);
  SetAcquisitionMode(5);
  ASSERT_EQ(StartAcquisition(), RC_SUCCESS);
  VXSIM_AddFault("call VX_Command feature AcquisitionStop at 1 rc 53");
  EXPECT_EQ(AbortAcquisition(), RC_FEATURE_ERROR);
  EXPECT_EQ(Status(), RC_ACQUIRING) << "a camera that refuses to stop goes on";
  VXSIM_ClearFaults();

  VXSIM_AddFault("call VX_GetBool feature CameraAcquiring at 1 rc 53");
  VXSIM_AddFault("call VX_Command feature AcquisitionStop at 1 rc 53");
  EXPECT_EQ(AbortAcquisition(), RC_FEATURE_ERROR);
  EXPECT_TRUE(Eventually([] { return Status() == RC_IDLE; }))
      << "a camera that answers nothing does not delay the end of the run";
}

// The camera ends the wait that its stop meets. A wait that began behind the stop would last its whole slice.
TEST_F(Acquisition, NoWaitForAFrameBeginsBehindAnAbort)
{
  constexpr int kRounds = 20;
  Open();
  SetAcquisitionMode(5);
  std::ptrdiff_t waits = 0;
  for (int round = 0; round < kRounds; ++round) {
    ASSERT_EQ(StartAcquisition(), RC_SUCCESS);
    ASSERT_TRUE(Eventually([] {
      VXSIM_Statistics statistics{};
      return VXSIM_GetStatistics(0, &statistics) == VX_SUCCESS && statistics.waitsBlocked == 1;
    }));
    VXSIM_StartCallLog(1);
    ASSERT_EQ(AbortAcquisition(), RC_SUCCESS);
    VXSIM_StopCallLog();
    ASSERT_EQ(Status(), RC_IDLE);
    const std::vector<std::string> calls = LoggedCalls();
    waits += std::count_if(calls.begin(), std::find(calls.begin(), calls.end(), "VX_Flush -> 0"),
                           [](const std::string& call) { return call.rfind("VX_WaitBuffer", 0) == 0; });
  }
  // The wait in progress is not logged; now and then it has just come to its end and been followed by another.
  EXPECT_LT(waits, kRounds / 2);
}

} // namespace
