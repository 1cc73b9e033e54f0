// SPDX-License-Identifier: MIT
// Runs of the acquisition thread with scripted frames: how they begin, end and fail, and that no stop is lost.
#include "acquisition/TAcquisitionThread.h"
#include "acquisition/TCircularBuffer.h"
#include "acquisition/TDispatchQueue_Ignore.h"
#include "acquisition/TFetchQueue.h"
#include "tests/spool/logged_by.h"
#include "tests/utility/SystemCalls.h"
#include "utility/IDispatchRoutine.h"
#include "utility/TQuorinCriticalSection.h"
#include "utility/TQuorinMisc.h"
#include "vxcore_simulator.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <functional>
#include <stdexcept>
#include <sys/time.h>
#include <time.h>
#include <utility>

namespace {

std::atomic<long> clockOffsetSeconds{0};

} // namespace

// Stands in for the C library's, so that a test can set the system clock as TQuorinTime sees it.
extern "C" int gettimeofday(timeval* time, void* /*zone*/) noexcept
{
  timespec now{};
  clock_gettime(CLOCK_REALTIME, &now);
  time->tv_sec = now.tv_sec + clockOffsetSeconds;
  time->tv_usec = static_cast<suseconds_t>(now.tv_nsec / 1000);
  return 0;
}

namespace {

constexpr int kLongMs = 20000;

class TScriptedFetch final : public TFetchQueue
{
public:
  using TScript = std::function<int(unsigned char*& buffer, int& sizeBytes, int timeoutMs)>;

  int Fetch(unsigned char*& buffer, int& sizeBytes, int timeoutMs) override
  {
    ++calls;
    return script(buffer, sizeBytes, timeoutMs);
  }

  TScript script = [](unsigned char*&, int&, int) { return kNoFrame; };
  std::atomic<int> calls{0};
};

class TCountingRoutine final : public IDispatchRoutine
{
public:
  void Signal() override { ++signals; }
  std::atomic<int> signals{0};
};

/// Counts frames without memory behind them.
class TScriptedDispatch final : public TRingDispatchQueue
{
public:
  explicit TScriptedDispatch(TCircularBuffer* ring) : TRingDispatchQueue(ring, kNoCoreHandle) {}
  void Finalise() override
  {
    ++finalised;
    atTheEnd();
  }
  void Abort() override { ++aborted; }
  int Dispatch(unsigned char*, int) override
  {
    ++dispatched;
    CircularBuffer().Increment();
    return script();
  }

  bool IsSlot(const unsigned char*) override { return !strays; }

  std::atomic<bool> strays{false};
  std::function<int()> script = [] { return 0; };
  std::function<void()> atTheEnd = [] {};
  std::atomic<int> dispatched{0};
  std::atomic<int> finalised{0};
  std::atomic<int> aborted{0};
};

class AcquisitionThread : public ::testing::Test
{
protected:
  AcquisitionThread() { ring_.Reset(); }

  void FramesAtOnce()
  {
    fetch_.script = [](unsigned char*&, int&, int) { return TFetchQueue::kFrame; };
  }

  void RunToTheEnd(int loopCount)
  {
    thread_.SetLoopCount(loopCount);
    thread_.Start();
    ASSERT_FALSE(thread_.WaitForStop(kLongMs));
  }

  TCircularBuffer ring_;
  TScriptedFetch fetch_;
  TScriptedDispatch dispatch_{&ring_};
  TCountingRoutine routine_;
  QuorinUtility::TQuorinCriticalSection cameraLock_;
  TAcquisitionThread thread_{&fetch_, &dispatch_, &cameraLock_, &ring_, &routine_};
};

TEST_F(AcquisitionThread, FiniteRunTakesItsFramesAndStopsTheCamera)
{
  FramesAtOnce();
  thread_.SetTimeout(1000);
  VXSIM_StartCallLog(1);
  RunToTheEnd(3);
  VXSIM_StopCallLog();
  EXPECT_EQ(dispatch_.dispatched, 3);
  EXPECT_EQ(dispatch_.finalised, 1);
  EXPECT_FALSE(thread_.IsStarted());
  EXPECT_FALSE(thread_.IsTimedOut() || thread_.IsHardwareOverflow() || thread_.IsDispatchError());
  ASSERT_EQ(VXSIM_GetCallCount(), 1u);
  char line[100];
  VXSIM_GetCall(0, line, sizeof line);
  EXPECT_EQ(std::string(line).rfind("VX_Command AcquisitionStop", 0), 0u) << line;
}

TEST_F(AcquisitionThread, RunOfNoFramesEndsWithoutAFetch)
{
  for (const int loopCount : {0, -3}) RunToTheEnd(loopCount);
  EXPECT_EQ(fetch_.calls, 0);
  EXPECT_EQ(dispatch_.finalised, 2);
}

TEST_F(AcquisitionThread, MissingFrameEndsTheRunAfterTheTimeLimit)
{
  using TClock = std::chrono::steady_clock;
  constexpr std::chrono::milliseconds kLimit(250);
  constexpr std::chrono::milliseconds kClockTick(10); // the limit begins up to one earlier
  TClock::time_point first;
  TClock::time_point lastButOneEnded;
  TClock::time_point lastEnded;
  fetch_.script = [&](unsigned char*&, int&, int timeoutMs) {
    EXPECT_LE(timeoutMs, 100);
    if (fetch_.calls == 1) first = TClock::now();
    QuorinUtility::TQuorinMisc::Sleep(timeoutMs);
    lastButOneEnded = std::exchange(lastEnded, TClock::now());
    return TFetchQueue::kNoFrame;
  };
  thread_.SetTimeout(kLimit.count());
  const auto begin = TClock::now();
  RunToTheEnd(1);
  EXPECT_TRUE(thread_.IsTimedOut());
  EXPECT_FALSE(thread_.IsHardwareOverflow());
  EXPECT_GE(TClock::now() - begin, kLimit - kClockTick);
  if (fetch_.calls > 1) {
    EXPECT_LE(lastButOneEnded - first, kLimit) << "not asked again after the limit";
  }
  EXPECT_EQ(routine_.signals, 1);
  EXPECT_EQ(ring_.WaitChange(0), 4);

  FramesAtOnce();
  ring_.Reset();
  RunToTheEnd(1);
  EXPECT_FALSE(thread_.IsTimedOut()) << "a new run begins without the flags of the last";
  EXPECT_EQ(ring_.WaitChange(0), 0) << "nor does a wait for it fail";
}

TEST_F(AcquisitionThread, OverflowAndDispatchFailureEndTheRunWithTheirFlag)
{
  thread_.SetTimeout(1000);
  fetch_.script = [](unsigned char*&, int&, int) { return TFetchQueue::kHardwareOverflow; };
  RunToTheEnd(5);
  EXPECT_TRUE(thread_.IsHardwareOverflow());
  EXPECT_FALSE(thread_.IsTimedOut());

  FramesAtOnce();
  dispatch_.script = [] { return 1; };
  RunToTheEnd(5);
  EXPECT_TRUE(thread_.IsDispatchError());
  EXPECT_FALSE(thread_.IsHardwareOverflow());
  EXPECT_EQ(dispatch_.dispatched, 1);

  dispatch_.script = []() -> int { throw std::runtime_error("no way to put it"); };
  RunToTheEnd(5);
  EXPECT_TRUE(thread_.IsDispatchError());
  EXPECT_EQ(dispatch_.dispatched, 2);
  EXPECT_EQ(ring_.WaitChange(0), 4);
}

TEST_F(AcquisitionThread, ARunThatCannotBeFinishedHasFailed)
{
  FramesAtOnce();
  dispatch_.atTheEnd = [] { throw std::runtime_error("no end"); };
  RunToTheEnd(2);
  EXPECT_TRUE(thread_.IsDispatchError());
  EXPECT_EQ(routine_.signals, 1);

  dispatch_.atTheEnd = [] {};
  RunToTheEnd(2);
  EXPECT_FALSE(thread_.IsDispatchError());
}

TEST_F(AcquisitionThread, FrameFetchedWhileStoppingIsNotDispatched)
{
  fetch_.script = [this](unsigned char*&, int&, int) {
    thread_.Stop();
    return TFetchQueue::kFrame;
  };
  thread_.SetContinuousMode(true);
  thread_.SetTimeout(1000);
  RunToTheEnd(1);
  EXPECT_EQ(dispatch_.dispatched, 0);
  EXPECT_EQ(dispatch_.aborted, 1);
  EXPECT_EQ(ring_.WaitChange(0), 2) << "a stop is no failure";
}

TEST_F(AcquisitionThread, StopRightAfterStartIsNeverLost)
{
  thread_.SetContinuousMode(true);
  thread_.SetTimeout(kLongMs);
  FramesAtOnce();
  for (int round = 0; round < 300; ++round) {
    thread_.Start();
    thread_.Stop();
    ASSERT_FALSE(thread_.WaitForStop(kLongMs)) << "round " << round;
  }
}

TEST_F(AcquisitionThread, RunThatIsOverAtOnceIsNotWaitedFor)
{
  FramesAtOnce();
  thread_.SetTimeout(1000);
  thread_.SetLoopCount(1);
  for (int round = 0; round < 100; ++round) {
    thread_.Start();
    ASSERT_FALSE(thread_.WaitForBegin(kLongMs));
    ASSERT_FALSE(thread_.WaitForStop(kLongMs));
  }
  EXPECT_EQ(dispatch_.dispatched, 100);
  EXPECT_TRUE(thread_.WaitForStart(0)) << "no run is in progress";
}

TEST_F(AcquisitionThread, KnowsWhenARunIsOnlyFinishing)
{
  FramesAtOnce();
  thread_.SetTimeout(1000);
  std::atomic<bool> finishing{true};
  dispatch_.script = [&] {
    if (dispatch_.dispatched == 1) finishing = thread_.IsFinishing();
    return 0;
  };
  RunToTheEnd(2);
  EXPECT_FALSE(finishing) << "one of two frames was to come";

  ring_.Reset();
  dispatch_.script = [&] {
    finishing = thread_.IsFinishing();
    return 0;
  };
  finishing = false;
  RunToTheEnd(1);
  EXPECT_TRUE(finishing);
  EXPECT_FALSE(thread_.IsFinishing());
}

TEST_F(AcquisitionThread, CameraThatFailsAtOnceIsNotAskedInABusyLoop)
{
  thread_.SetTimeout(300);
  RunToTheEnd(1);
  EXPECT_TRUE(thread_.IsTimedOut());
  EXPECT_LE(fetch_.calls, 80);
}

// Another camera's buffer, or none, is no frame although the fetch succeeded.
TEST_F(AcquisitionThread, BuffersThatAreNoSlotsUseUpNoFrameButTheTimeLimit)
{
  FramesAtOnce();
  thread_.SetTimeout(300);
  dispatch_.strays = true;
  const std::string log = LoggedBy([this] { RunToTheEnd(3); });
  EXPECT_TRUE(thread_.IsTimedOut());
  EXPECT_EQ(dispatch_.dispatched, 0);
  EXPECT_LE(fetch_.calls, 80) << "not asked in a busy loop";
  const auto lines = std::count(log.begin(), log.end(), '\n');
  EXPECT_GE(lines, 1) << log;
  EXPECT_LE(lines, 8) << log;

  fetch_.calls = 0;
  fetch_.script = [this](unsigned char*&, int&, int) {
    dispatch_.strays = fetch_.calls % 2 == 1;
    return TFetchQueue::kFrame;
  };
  thread_.SetTimeout(kLongMs);
  RunToTheEnd(3);
  EXPECT_EQ(dispatch_.dispatched, 3);
  EXPECT_EQ(fetch_.calls, 6);
}

// A camera that is stopped ends the wait in progress; the next one would last its whole slice.
TEST_F(AcquisitionThread, NoWaitForAFrameBeginsWhileTheCameraStops)
{
  std::atomic<bool> isStopped{false};
  fetch_.script = [&](unsigned char*&, int&, int) {
    while (!isStopped) std::this_thread::yield();
    isStopped = false;
    return TFetchQueue::kNoFrame;
  };
  thread_.SetTimeout(kLongMs);
  thread_.SetContinuousMode(true);
  thread_.Start();
  ASSERT_TRUE(system_calls::Eventually([this] { return fetch_.calls == 1; }));
  thread_.BeginStopAttempt();
  isStopped = true;
  ASSERT_TRUE(system_calls::Eventually([&] { return !isStopped; }));
  thread_.EndStopAttempt();
  ASSERT_TRUE(system_calls::Eventually([this] { return fetch_.calls == 2; })) << "the camera goes on";

  thread_.BeginStopAttempt();
  isStopped = true;
  ASSERT_TRUE(system_calls::Eventually([&] { return !isStopped; }));
  thread_.Stop();
  ASSERT_FALSE(thread_.WaitForStop(kLongMs));
  EXPECT_EQ(fetch_.calls, 2);
}

TEST_F(AcquisitionThread, ClockThatIsSetBackDoesNotEndTheRun)
{
  fetch_.script = [this](unsigned char*&, int&, int) {
    if (fetch_.calls == 1) clockOffsetSeconds = -3600;
    return fetch_.calls < 4 ? TFetchQueue::kNoFrame : TFetchQueue::kFrame;
  };
  thread_.SetTimeout(kLongMs);
  RunToTheEnd(1);
  clockOffsetSeconds = 0;
  EXPECT_FALSE(thread_.IsTimedOut());
  EXPECT_EQ(dispatch_.dispatched, 1);
}

TEST_F(AcquisitionThread, ActionsForTheEndOfARunWaitForIt)
{
  thread_.SetTimeout(kLongMs);
  thread_.SetContinuousMode(true);
  EXPECT_FALSE(thread_.AtEndOfRun([] { FAIL(); }));
  thread_.Start();
  ASSERT_FALSE(thread_.WaitForBegin(kLongMs));
  std::atomic<int> done{0};
  EXPECT_TRUE(thread_.AtEndOfRun([&] { ++done; }));
  EXPECT_EQ(done, 0);
  thread_.Stop();
  ASSERT_FALSE(thread_.WaitForStop(kLongMs));
  EXPECT_EQ(done, 1);
}

TEST(AcquisitionThreadLife, WithoutAThreadNoRunIsEverInProgress)
{
  TCircularBuffer ring;
  TScriptedFetch fetch;
  TScriptedDispatch dispatch(&ring);
  QuorinUtility::TQuorinCriticalSection cameraLock;
  system_calls::Directed system;
  system.threadCreationError = EAGAIN;
  TAcquisitionThread thread(&fetch, &dispatch, &cameraLock, &ring, nullptr);
  EXPECT_FALSE(thread.IsAlive());
  thread.Start();
  EXPECT_FALSE(thread.WaitForStop(0));
  EXPECT_FALSE(thread.AtEndOfRun([] {}));
}

TEST(AcquisitionThreadLife, EndsARunThatIsInProgressWhenItGoes)
{
  for (int round = 0; round < 100; ++round) {
    TCircularBuffer ring;
    TScriptedFetch fetch;
    TScriptedDispatch dispatch(&ring);
    QuorinUtility::TQuorinCriticalSection cameraLock;
    fetch.script = [](unsigned char*&, int&, int) { return TFetchQueue::kFrame; };
    TAcquisitionThread thread(&fetch, &dispatch, &cameraLock, &ring, nullptr);
    thread.SetContinuousMode(true);
    thread.Start();
    if (round % 2) thread.WaitForBegin(kLongMs);
  }
}

} // namespace
