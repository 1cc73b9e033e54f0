// SPDX-License-Identifier: MIT
// The thread that moves frames from the camera to the application.
#include "acquisition/TAcquisitionThread.h"

#include "acquisition/TCircularBuffer.h"
#include "acquisition/TDispatchQueue.h"
#include "acquisition/TFetchQueue.h"
#include "acquisition/TRunCamera.h"
#include "features/current_core_handle.h"
#include "features/feature_access.h"
#include "features/feature_names.h"
#include "utility/IDispatchRoutine.h"
#include "utility/TAutoQuorinCriticalSection.h"
#include "utility/TQuorinLibDebugOutput.h"

#include <bit>
#include <chrono>
#include <ctime>
#include <cxxabi.h>
#include <exception>
#include <utility>

using QuorinUtility::TAutoQuorinCriticalSection;
using QuorinUtility::TQuorinEvent;
using QuorinUtility::TQuorinLibDebugOutput;

namespace {

constexpr bool kPerformanceLog = false;
constexpr const char* kPerformanceLogFile = "acquisitionthread.csv";
// Names fewer columns than the rows have; tools that read the file rely on both.
constexpr const char* kPerformanceLogHeader = "Frame Number,Time to Dispatch To Spooler,Time to Send Frame Req";
constexpr int kFetchSliceMs = 100;
constexpr std::uint64_t kMicrosecondsPerSecond = 1000000;
constexpr std::uint64_t kNanosecondsPerMicrosecond = 1000;

// A camera that does not answer fails at once; without a pause the thread would spin until the time-out.
constexpr std::uint64_t kFastFailureUs = 5000;
constexpr std::chrono::milliseconds kPauseAfterFastFailure{5};

TQuorinTime Now()
{
  TQuorinTime now;
  now.GetCurrentSystemTime();
  return now;
}

// As Now(), but up to a timer tick (some ms) behind, for a fifth of the price: near enough for the begin of a
// limit of a second and more, which most frames never look at.
TQuorinTime RecentNow()
{
  timespec now{};
  clock_gettime(CLOCK_REALTIME_COARSE, &now);
  return TQuorinTime(static_cast<std::uint64_t>(now.tv_sec) * kMicrosecondsPerSecond +
                     static_cast<std::uint64_t>(now.tv_nsec) / kNanosecondsPerMicrosecond);
}

// What queues and routines throw must not end the thread in the middle of a run: it is logged and counts as
// failure.
template <class Action>
bool Guarded(const char* failure, Action action)
{
  try {
    return action();
  } catch (const abi::__forced_unwind&) {
    throw; // the thread is being cancelled
  } catch (const std::exception& exception) {
    TQuorinLibDebugOutput::Output(__FILE__, __LINE__, __func__, "%s: %s", failure, exception.what());
  } catch (...) {
    TQuorinLibDebugOutput::Output(__FILE__, __LINE__, __func__, "%s", failure);
  }
  return false;
}

} // namespace

TAcquisitionThread::TAcquisitionThread(TFetchQueue* fetchQueue, TDispatchQueue* dispatchQueue,
                                       QuorinUtility::TQuorinCriticalSection* cameraLock,
                                       TCircularBuffer* circularBuffer, IDispatchRoutine* dispatchRoutine)
    : startEvent_(false, false),
      stoppedEvent_(true, true),
      startedEvent_(true, false),
      fetchQueue_(fetchQueue),
      dispatchQueue_(dispatchQueue),
      cameraLock_(cameraLock),
      circularBuffer_(circularBuffer),
      dispatchRoutine_(dispatchRoutine),
      performanceLog_(kPerformanceLog, kPerformanceLogFile, kPerformanceLogHeader)
{
  workThread_ = std::make_unique<QuorinUtility::TQuorinWorkThread>(
      this, QuorinUtility::TQuorinWorkThread::eNormalPriority, "vxmcd-acquire");
}

TAcquisitionThread::~TAcquisitionThread()
{
  {
    const TLock lock(runMutex_);
    stopRequested_ = true;
    terminate_ = true;
  }
  runChanged_.NotifyAll();
  startEvent_.Set();
  workThread_->WaitForCompletion();
}

void TAcquisitionThread::Start(std::shared_ptr<const TRunCamera> camera)
{
  if (!IsAlive()) return;
  {
    const TLock lock(runMutex_);
    ++requestedRun_;
    requestedCamera_ = std::move(camera);
  }
  startEvent_.Set();
}

void TAcquisitionThread::Stop()
{
  if (TDispatchQueue* const queue = dispatchQueue_) queue->Abort();
  {
    const TLock lock(runMutex_);
    stoppedRun_ = requestedRun_;
    stopRequested_ = true;
    stopIsTried_ = false;
  }
  runChanged_.NotifyAll();
}

void TAcquisitionThread::BeginStopAttempt()
{
  stopIsTried_ = true;
}

void TAcquisitionThread::EndStopAttempt()
{
  {
    const TLock lock(runMutex_);
    stopIsTried_ = false;
  }
  runChanged_.NotifyAll();
}

bool TAcquisitionThread::IsStarted()
{
  return startedEvent_.Wait(0);
}

bool TAcquisitionThread::WaitForStart(int timeoutMs)
{
  return !startedEvent_.Wait(timeoutMs);
}

bool TAcquisitionThread::WaitForBegin(int timeoutMs)
{
  const TLock lock(runMutex_);
  return !runChanged_.WaitFor(runMutex_, std::chrono::milliseconds(timeoutMs),
                              [this]() REQUIRES(runMutex_) { return begunRun_ == requestedRun_; });
}

bool TAcquisitionThread::WaitForStop(int timeoutMs)
{
  const TLock lock(runMutex_);
  const auto hasEnded = [this]() REQUIRES(runMutex_) { return endedRun_ == requestedRun_; };
  if (timeoutMs != TQuorinEvent::Infinite)
    return !runChanged_.WaitFor(runMutex_, std::chrono::milliseconds(timeoutMs), hasEnded);
  runChanged_.Wait(runMutex_, hasEnded);
  return false;
}

bool TAcquisitionThread::IsFinishing()
{
  if (continuous_ || !IsStarted()) return false;
  const int loopCount = loopCount_;
  if (loopCount < 1) return true;
  return circularBuffer_ && circularBuffer_->GetMaxImageIndex() >= static_cast<std::uint64_t>(loopCount);
}

bool TAcquisitionThread::AtEndOfRun(std::function<void()> action)
{
  const TLock lock(runMutex_);
  if (endedRun_ == requestedRun_) return false;
  endOfRunAction_ = std::move(action);
  return true;
}

void TAcquisitionThread::Run()
{
  performanceLog_.Open();
  while (!terminate_) {
    startEvent_.Wait(TQuorinEvent::Infinite);
    if (terminate_) return;
    if (!BeginRun()) continue;
    TakeFrames();
    EndRun();
  }
}

// Several requests before the thread wakes up are one run; the event may then be left set without a request.
bool TAcquisitionThread::BeginRun()
{
  {
    const TLock lock(runMutex_);
    if (begunRun_ == requestedRun_) return false;
    stoppedEvent_.Reset();
    begunRun_ = requestedRun_;
    camera_ = std::move(requestedCamera_);
    timedOut_ = false;
    stopRequested_ = stoppedRun_ >= begunRun_;
    hardwareOverflow_ = false;
    dispatchError_ = false;
    startedEvent_.Set();
  }
  runChanged_.NotifyAll();
  fetchQueue_->SetCamera(camera_.get());
  return true;
}

void TAcquisitionThread::TakeFrames()
{
  const bool continuous = continuous_;
  int remaining = loopCount_;
  strayBuffers_ = 0;
  long frameNumber = 0;
  while (!IsEnding() && (continuous || remaining > 0)) {
    unsigned char* buffer = nullptr;
    int sizeBytes = 0;
    performanceLog_.Write("AcquisitionThread::Run Fetch Frame Start", frameNumber);
    const int result = Fetch(buffer, sizeBytes);
    performanceLog_.Write("AcquisitionThread::Run Fetch Frame End", frameNumber);
    if (IsEnding()) return;

    if (result != TFetchQueue::kFrame) {
      FailRun(ReasonWithoutFrame(result));
      return;
    }
    if (!continuous) {
      --remaining;
      ++frameNumber;
    }
    performanceLog_.Write("AcquisitionThread::Run Spool Frame", frameNumber - 1);
    if (!Dispatch(buffer, sizeBytes)) FailRun(dispatchError_);
    performanceLog_.Write("AcquisitionThread::Run Spool Frame End ", frameNumber - 1);
  }
}

std::atomic<bool>& TAcquisitionThread::ReasonWithoutFrame(int fetchResult)
{
  if (fetchResult == TFetchQueue::kHardwareOverflow) return hardwareOverflow_;
  return HasQueueFailed() ? dispatchError_ : timedOut_;
}

// Frames are written behind the thread's back; without a look now and then, a failure would show with the next
// frame only, and there may be none to come.
bool TAcquisitionThread::HasQueueFailed()
{
  TDispatchQueue* const queue = dispatchQueue_;
  return queue && queue->HasFailed();
}

int TAcquisitionThread::Fetch(unsigned char*& buffer, int& sizeBytes)
{
  const std::uint64_t limitMs = static_cast<std::uint64_t>(static_cast<std::int64_t>(timeoutMs_));
  TQuorinTime start = RecentNow();
  TQuorinTime last = start;
  for (;;) {
    WaitWhileStopIsTried();
    if (IsEnding()) return TFetchQueue::kNoFrame;
    const int result = FetchOnce(buffer, sizeBytes);
    if (result != TFetchQueue::kNoFrame) return result;

    const TQuorinTime now = Now();

    // A clock that was set back does not show how much time has passed: count from here.
    if (now.Microseconds() < start.Microseconds()) start = now;
    if (now.Microseconds() / 1000 - start.Microseconds() / 1000 >= limitMs || IsEnding()) return result;
    if (HasQueueFailed()) return result;
    if ((now - last).Microseconds() < kFastFailureUs) PauseUnlessEnding(kPauseAfterFastFailure);
    last = Now();
  }
}

// A buffer that is no slot of this run, or none at all, is no frame, although the camera says so.
int TAcquisitionThread::FetchOnce(unsigned char*& buffer, int& sizeBytes)
{
  buffer = nullptr;
  const int result = fetchQueue_->Fetch(buffer, sizeBytes, kFetchSliceMs);
  TDispatchQueue* const queue = dispatchQueue_;
  if (result != TFetchQueue::kFrame || !queue || queue->IsSlot(buffer)) return result;
  if (std::has_single_bit(++strayBuffers_)) // the 1st, 2nd, 4th, 8th, ...
    TQuorinLibDebugOutput::Output(__FILE__, __LINE__, __func__,
                                  "the camera delivered %s (%llu so far in this run): not counted as a frame",
                                  buffer ? "a buffer that is no slot of this run" : "a frame without a buffer",
                                  static_cast<unsigned long long>(strayBuffers_));
  return TFetchQueue::kNoFrame;
}

void TAcquisitionThread::WaitWhileStopIsTried()
{
  if (!stopIsTried_) return;
  const TLock lock(runMutex_);
  runChanged_.WaitFor(runMutex_, std::chrono::milliseconds(kFetchSliceMs),
                      [this] { return !stopIsTried_ || IsEnding(); });
}

void TAcquisitionThread::PauseUnlessEnding(std::chrono::milliseconds time)
{
  const TLock lock(runMutex_);
  runChanged_.WaitFor(runMutex_, time, [this] { return IsEnding(); });
}

bool TAcquisitionThread::Dispatch(unsigned char* buffer, int sizeBytes)
{
  TDispatchQueue* const queue = dispatchQueue_;
  if (!queue) return false;
  return Guarded("a frame could not be dispatched", [=] { return queue->Dispatch(buffer, sizeBytes) == 0; });
}

void TAcquisitionThread::FailRun(std::atomic<bool>& reason)
{
  {
    const TLock lock(runMutex_);
    stopRequested_ = true;
    reason = true;
  }
  if (circularBuffer_) circularBuffer_->AcquisitionError();
  Guarded("nobody could be notified that the run has failed", [this] {
    if (dispatchRoutine_) dispatchRoutine_->Signal();
    return true;
  });
}

void TAcquisitionThread::Finalise()
{
  TDispatchQueue* const queue = dispatchQueue_;
  if (!queue) return;
  const bool finalised = Guarded("the end of a run failed", [=] {
    queue->Finalise();
    return true;
  });
  if (!dispatchError_ && (!finalised || HasQueueFailed())) FailRun(dispatchError_);
}

void TAcquisitionThread::EndRun()
{
  performanceLog_.Close();
  Finalise();
  {
    const TAutoQuorinCriticalSection lock(cameraLock_);
    SendCommand(camera_ ? camera_->CoreHandle() : CurrentCoreHandle(), Feature::kAcquisitionStop);
  }
  fetchQueue_->SetCamera(nullptr);
  {
    TLock lock(runMutex_);
    // An action may request another one.
    while (const std::function<void()> action = std::exchange(endOfRunAction_, nullptr)) {
      lock.Unlock();
      action();
      lock.Relock();
    }
    camera_.reset();
    startedEvent_.Reset();
    stoppedEvent_.Set();
    endedRun_ = begunRun_;
  }
  runChanged_.NotifyAll();
}
