// SPDX-License-Identifier: MIT
// Owner of everything that one camera's acquisitions need.
#pragma once

#include "acquisition/TAcquisitionThread.h"
#include "acquisition/TCircularBuffer.h"
#include "acquisition/TDispatchQueue_Ignore.h"
#include "acquisition/TDispatchQueue_Requeue.h"
#include "acquisition/TDispatchQueue_Spool.h"
#include "acquisition/TEventDispatchRoutine.h"
#include "acquisition/TMetadataXerox.h"
#include "acquisition/TTimestampRepository.h"
#include "acquisition/TVXFetchQueue.h"
#include "spool/TSpoolLayout.h"
#include "spool/TSpoolSpace.h"
#include "utility/TMutex.h"
#include "utility/TUseCounter.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

namespace QuorinUtility {
class TQuorinCriticalSection;
}

/// Starts and stops the acquisitions of one camera and knows where their frames are. Owned by the camera's record;
/// borrows the camera lock. Its starts and stops address its own camera, which is the current one when a program calls
/// them; its thread addresses the camera that is current at the moment or, with independent cameras, its own.
/// Thread-safe: starts, stops and releases of memory exclude each other, and the rest may be called meanwhile.
/// Callers that stay inside for long, in a wait or a copy, count themselves in Uses(); Close() ends the waits and
/// blocks until all of them have left.
class TVxmcdAcquisitionManager final
{
public:
  /// What Start(), Stop() and Wait() answer.
  enum Result
  {
    kDone = 0,
    kCommandFailed = 1,    ///< the camera refused to stop
    kNotAcquiring = 2,     ///< there was nothing to stop
    kAlreadyAcquiring = 3, ///< reserved
    kWaitCancelled = 4,
    kWaitTimedOut = 5,
    kStartFailed = 6,
    kAcquisitionFailed = 7,
    kStartThrew = 8
  };

  /// Which frames a run takes.
  enum RunMode
  {
    kSingleImage = 0,
    kSeries = 1,
    kUntilAborted = 2
  };

  static constexpr int kStopTimeoutMs = 10000;

  /// @p coreHandle is the camera. @p stopTimeoutMs limits how long Start() and Stop() wait for the end of a run.
  TVxmcdAcquisitionManager(QuorinUtility::TQuorinCriticalSection* cameraLock, int coreHandle,
                           int stopTimeoutMs = kStopTimeoutMs);
  /// Closes it and ends the run. The camera may still have slots: see CameraMemory().
  ~TVxmcdAcquisitionManager();
  TVxmcdAcquisitionManager(const TVxmcdAcquisitionManager&) = delete;
  TVxmcdAcquisitionManager& operator=(const TVxmcdAcquisitionManager&) = delete;

  /// Number of images of a series.
  void SetImageCount(int imageCount) { imageCount_ = imageCount; }
  void SetRunMode(int runMode) { runMode_ = runMode; }
  /// Whether finite runs are written to the disk, how and where: all of it at once. Counts from the next start on.
  void SetSpool(bool enable, int method, const char* path);
  void SetSpoolThreadCount(int threadCount);
  /// What a run that is written to disk would need if it began now; nothing when the next run is not written, or where
  /// that is not known.
  std::optional<TSpoolSpace> SpoolSpace() const;

  /// The memory budget of the ring in bytes.
  int GetCircularBufferSize() const;
  void limitCircularBufferLengthToMaxOf5000(int& length) const;

  /// Starts a run. An earlier one that has delivered all its frames is finished first, any other one stopped. Blocks
  /// until the new run has begun. A Stop() meanwhile ends the wait for the earlier run, and the start fails.
  int Start();
  /// Stops the run. Blocks until it has ended, for the time limit at most.
  int Stop();
  /// Blocks while a finite run that has delivered all its frames writes them to the disk: for as long as that makes
  /// progress, and the time limit beyond. Returns at once for any other run. False when that run has not ended: it
  /// makes no progress, or a Stop() has ended the wait.
  bool FinishDeliveredRun();
  /// Waits for a frame, for at most @p timeoutMs; a cancellation or a failed run ends the wait too.
  int Wait(int timeoutMs);
  /// Ends all waits, those in progress and those that begin before the next start. Returns 0.
  int CancelWait();
  /// Frees the ring, at the end of the run in progress if there is one.
  void FreeInternalMemory();
  /// The camera is being closed: refuses further starts, ends all waits for good, and blocks until no caller is inside.
  /// No new use may begin.
  void Close();

  bool IsRunning() { return thread_->IsStarted(); }
  /// Whether a run goes on that takes its frames from the current camera, whichever that is.
  bool IsRunOfCurrentCamera() { return IsRunning() && !runIsIndependent_; }
  bool IsTimedOut() const { return thread_->IsTimedOut(); }
  bool IsHardwareOverflow() const { return thread_->IsHardwareOverflow(); }
  /// Whether the last run failed because its frames could not be written to disk.
  bool IsSpoolIssues() const { return thread_->IsDispatchError() && spoolingRun_; }
  /// As IsRunning(), but a finite run that has delivered all its frames is given a moment to end first.
  bool IsRunningAfterLastFrame();

  /// The queue of the present or last run, null before the first and after a start that failed. Borrowed.
  TDispatchQueue* GetDispatchQueue() const;
  /// The same, kept for as long as the caller needs it.
  std::shared_ptr<TDispatchQueue> SharedDispatchQueue() const;
  /// The timestamps of the present or last run, null when metadata was off.
  std::shared_ptr<TTimestampRepository> GetTimestampRepository() const;

  bool isMetadataEnabled(int coreHandle) const;

  TUseCounter& Uses() { return uses_; }

  /// The memory that the camera may still be writing into. It must outlive the object until the camera is closed.
  std::vector<std::shared_ptr<TFrameSlab>> CameraMemory() const { return circularBuffer_.CameraMemory(); }

private:
  /// What a run is to be. Read once in a start, since settings may change meanwhile.
  struct TRunPlan
  {
    int runMode;
    int loopCount;
  };

  int StartRun() REQUIRES(controlMutex_);
  TRunPlan Plan() const;
  bool EndEarlierRun() REQUIRES(controlMutex_);
  bool WaitForEndOfRun() EXCLUDES(cameraLock_);
  int StopCamera() EXCLUDES(cameraLock_);
  void SetUpRun(std::int64_t frameSizeBytes) REQUIRES(controlMutex_);
  bool PrepareRun(const TRunPlan& plan, std::int64_t frameSizeBytes, std::int64_t slotCount)
      REQUIRES(controlMutex_);
  bool PrepareUntilAborted(std::int64_t frameSizeBytes, std::int64_t slotCount) REQUIRES(controlMutex_);
  bool PrepareFinite(std::int64_t frameSizeBytes, std::int64_t slotCount, std::int64_t loopCount)
      REQUIRES(controlMutex_);
  bool PrepareSpooled(std::int64_t frameSizeBytes, std::int64_t slotCount, int loopCount,
                      const TSpoolSettings& settings) REQUIRES(controlMutex_);
  std::optional<TSpoolSettings> SpoolSettings() const;
  bool AllocateRing(std::int64_t frameSizeBytes, std::int64_t slotCount) REQUIRES(controlMutex_);
  bool Allocate(std::int64_t frameSizeBytes, std::int64_t slots) REQUIRES(controlMutex_);
  bool QueueSlots(std::int64_t frameSizeBytes) REQUIRES(controlMutex_);
  int StartCamera() REQUIRES(controlMutex_) EXCLUDES(cameraLock_);
  void Flush();
  void DropFrames();
  void Drain() REQUIRES(controlMutex_);
  void SetCurrentQueue(std::shared_ptr<TDispatchQueue> queue) REQUIRES(controlMutex_);
  void createMetadataObjects() REQUIRES(controlMutex_);
  void destroyMetadataObjects() REQUIRES(controlMutex_);

  const int coreHandle_;
  std::unique_ptr<TAcquisitionThread> thread_;
  TVXFetchQueue fetchQueue_;
  std::shared_ptr<TDispatchQueue_Ignore> ignoreQueue_;
  std::shared_ptr<TDispatchQueue_Requeue> requeueQueue_;
  std::shared_ptr<TDispatchQueue_Spool> spoolQueue_;
  std::shared_ptr<TDispatchQueue> dispatchQueue_ GUARDED_BY(runObjectsMutex_);
  TCircularBuffer circularBuffer_;
  std::shared_ptr<TTimestampRepository> timestampRepository_ GUARDED_BY(runObjectsMutex_);
  std::shared_ptr<TMetadataXerox> metadataXerox_ GUARDED_BY(runObjectsMutex_);
  TEventDispatchRoutine eventDispatchRoutine_;
  std::atomic<int> imageCount_{1};
  std::atomic<int> runMode_{kSingleImage};
  QuorinUtility::TQuorinCriticalSection* cameraLock_;
  const int stopTimeoutMs_;
  bool spoolEnabled_ GUARDED_BY(spoolMutex_) = false;
  TSpoolSettings spoolSettings_ GUARDED_BY(spoolMutex_);
  std::atomic<bool> spoolingRun_{false};
  std::atomic<bool> runIsIndependent_{false};
  std::atomic<bool> closed_{false};
  std::atomic<std::uint64_t> stops_{0}; // calls of Stop(), each of which ends the waits for an earlier run

  TMutex controlMutex_; // one start, stop or release at a time
  mutable TMutex runObjectsMutex_;
  mutable TMutex spoolMutex_;
  TUseCounter uses_;
};
