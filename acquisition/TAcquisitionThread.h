// SPDX-License-Identifier: MIT
// The thread that moves frames from the camera to the application.
#pragma once

#include "utility/TMutex.h"
#include "utility/TPerformanceLog.h"
#include "utility/TQuorinEvent.h"
#include "utility/TQuorinTime.h"
#include "utility/TQuorinWorkThread.h"
#include "utility/TQuorinWorkThreadRoutine.h"

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>

class IDispatchRoutine;
class TCircularBuffer;
class TDispatchQueue;
class TFetchQueue;
class TRunCamera;

namespace QuorinUtility {
class TQuorinCriticalSection;
}

/// One worker thread for the life of a camera's acquisition manager, which owns it; between runs it sleeps. A run
/// takes frames from the fetch queue to the dispatch queue until its frames are counted down, until Stop(), or
/// until a fetch or a dispatch fails; then it stops the camera. The object borrows everything it is given, which
/// must outlive it.
///
/// The setters are for when no run is in progress; Start(), Stop(), the waits and the flags come from any thread.
/// Runs are numbered: a stop is meant for the runs requested so far and cannot be lost, however late the thread
/// wakes up.
class TAcquisitionThread final : public QuorinUtility::TQuorinWorkThreadRoutine
{
public:
  TAcquisitionThread(TFetchQueue* fetchQueue, TDispatchQueue* dispatchQueue,
                     QuorinUtility::TQuorinCriticalSection* cameraLock, TCircularBuffer* circularBuffer,
                     IDispatchRoutine* dispatchRoutine);
  /// Ends the run in progress and waits for the thread to finish.
  ~TAcquisitionThread() override;

  /// Number of frames of a finite run; below 1 a run ends at once.
  void SetLoopCount(int loopCount) { loopCount_ = loopCount; }
  /// How long one frame may take, in ms.
  void SetTimeout(int timeoutMs) { timeoutMs_ = timeoutMs; }
  void SetDispatchQueue(TDispatchQueue* dispatchQueue) { dispatchQueue_ = dispatchQueue; }
  /// Whether runs go on until Stop() instead of counting down.
  void SetContinuousMode(bool continuous) { continuous_ = continuous; }

  /// Requests a run, which addresses @p camera and keeps it until it ends, or else the current camera. Does not wait.
  void Start(std::shared_ptr<const TRunCamera> camera = nullptr);
  /// Asks the run in progress, or just requested, to end. Does not wait; it ends when the present wait for a frame
  /// does, within one fetch slice of 100 ms.
  void Stop();
  /// Begins no new wait for a frame until EndStopAttempt() or Stop(), for one slice at most: the camera is stopping,
  /// which ends the wait in progress, and a new one would last a whole slice without a frame.
  void BeginStopAttempt();
  /// The camera has not stopped, and the run goes on.
  void EndStopAttempt();

  /// Whether a run is in progress.
  bool IsStarted();
  /// Waits for a run to be in progress; true when the time ran out.
  bool WaitForStart(int timeoutMs);
  /// Waits until the run requested last has begun; it may have ended again. True when the time ran out.
  bool WaitForBegin(int timeoutMs);
  /// Waits until every requested run has ended; true when the time ran out; TQuorinEvent::Infinite waits without
  /// limit. Steps of the system clock do not matter.
  bool WaitForStop(int timeoutMs);

  // Why the last run ended; kept until the next one begins.
  bool IsTimedOut() const { return timedOut_; }
  bool IsHardwareOverflow() const { return hardwareOverflow_; }
  bool IsDispatchError() const { return dispatchError_; }

  /// Whether a finite run is in progress that has delivered all its frames and is only finishing.
  bool IsFinishing();

  /// Whether the thread could be made. Without it no run is ever in progress, and requests are ignored.
  bool IsAlive() const { return workThread_->IsCreated(); }

  /// Has @p action called at the end of the run in progress, on the acquisition thread, once. Returns false,
  /// without taking the action, when no run is in progress.
  bool AtEndOfRun(std::function<void()> action);

  void Run() override;

private:
  bool BeginRun();
  void TakeFrames();
  int Fetch(unsigned char*& buffer, int& sizeBytes);
  int FetchOnce(unsigned char*& buffer, int& sizeBytes);
  void WaitWhileStopIsTried();
  bool Dispatch(unsigned char* buffer, int sizeBytes);
  void PauseUnlessEnding(std::chrono::milliseconds time);
  void FailRun(std::atomic<bool>& reason);
  std::atomic<bool>& ReasonWithoutFrame(int fetchResult);
  bool HasQueueFailed();
  void EndRun();
  void Finalise();
  bool IsEnding() const { return stopRequested_ || terminate_; }

  std::unique_ptr<QuorinUtility::TQuorinWorkThread> workThread_;
  QuorinUtility::TQuorinEvent startEvent_;
  QuorinUtility::TQuorinEvent stoppedEvent_;
  QuorinUtility::TQuorinEvent startedEvent_;
  TFetchQueue* fetchQueue_;
  std::atomic<TDispatchQueue*> dispatchQueue_;
  std::atomic<int> loopCount_{0};
  std::atomic<int> timeoutMs_{0};
  std::atomic<bool> continuous_{false};
  std::atomic<bool> timedOut_{false};
  std::atomic<bool> stopRequested_{false};
  std::atomic<bool> terminate_{false};
  std::atomic<bool> hardwareOverflow_{false};
  std::atomic<bool> dispatchError_{false};
  std::atomic<bool> stopIsTried_{false};
  QuorinUtility::TQuorinCriticalSection* cameraLock_;
  TCircularBuffer* circularBuffer_;
  IDispatchRoutine* dispatchRoutine_;
  TPerformanceLog performanceLog_;
  // Of the run in progress; acquisition thread only.
  std::uint64_t strayBuffers_ = 0;
  std::shared_ptr<const TRunCamera> camera_;

  // runChanged_ is notified of every change. Begun and ended are the numbers of the last run that did so; the started
  // and stopped events mirror them, but do not say which run they belong to.
  TMutex runMutex_;
  TCondition runChanged_;
  std::uint64_t requestedRun_ GUARDED_BY(runMutex_) = 0;
  std::uint64_t begunRun_ GUARDED_BY(runMutex_) = 0;
  std::uint64_t endedRun_ GUARDED_BY(runMutex_) = 0;
  std::uint64_t stoppedRun_ GUARDED_BY(runMutex_) = 0; // Stop() was called for this run and those before it
  std::shared_ptr<const TRunCamera> requestedCamera_ GUARDED_BY(runMutex_);
  std::function<void()> endOfRunAction_ GUARDED_BY(runMutex_);
};
