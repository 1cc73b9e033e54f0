// SPDX-License-Identifier: MIT
// Writes queued frames: opening and copying on one thread, closing on others.
#pragma once

#include "spool/TSpoolQueue.h"
#include "utility/IQuorinTask.h"
#include "utility/TPerformanceLog.h"
#include "utility/TQuorinWorkThreadRoutine.h"

#include <atomic>
#include <memory>

class IDispatchRoutine;
class ISpooler;

namespace QuorinUtility {
class TQuorinTaskLauncher;
class TQuorinWorkThread;
} // namespace QuorinUtility

/// Unlocks and closes the image that it is launched with. Borrows the spooler, which must be thread-safe. Has no state,
/// so that one task may run on several launchers at once.
class TFlushAndCloseFileTask final : public QuorinUtility::IQuorinTask
{
public:
  explicit TFlushAndCloseFileTask(ISpooler* spooler) : spooler_(spooler) {}

  /// @p image points to an IImage, open and locked. Failures are logged.
  void Execute(void* image) override;

private:
  ISpooler* spooler_;
};

/// Takes frames from one queue, writes them, and passes them on to another, in order, with a mark on those that
/// failed; has the images closed by launchers in turn. Borrows everything that it is made with: the queues and the
/// dispatch routine until it is destroyed, the spooler until the launchers have run every task as well. Its work
/// runs on its own thread from the constructor on; GetLastSavedImageIndex() is thread-safe.
class TCreateAndWriteFileTask final : public QuorinUtility::TQuorinWorkThreadRoutine
{
public:
  /// Without launchers images are closed on the task's thread. @p dispatchRoutine may be null. The performance log
  /// "tcreateandwritefiletask.csv" in the working directory is for measurements; nothing in the library switches it on.
  TCreateAndWriteFileTask(QuorinUtility::TQuorinTaskLauncher** launchers, ISpooler* spooler, int launcherCount,
                          TSpoolQueue* inputQueue, TSpoolQueue* reuseQueue, IDispatchRoutine* dispatchRoutine,
                          bool withPerformanceLog = false);
  /// Aborts the input queue and waits for the frame that is being written. To have every frame written, queue an
  /// end marker after the last one and wait for that on the reuse queue first.
  ~TCreateAndWriteFileTask() override;
  TCreateAndWriteFileTask(const TCreateAndWriteFileTask&) = delete;
  TCreateAndWriteFileTask& operator=(const TCreateAndWriteFileTask&) = delete;

  /// Whether there is a thread to write frames. False when it could not be made.
  bool IsAlive() const;

  /// The number, counted from 1, of the latest image that was taken from the queue; 0 before the first. It counts
  /// images that could not be written too.
  int GetLastSavedImageIndex() const { return lastSavedImageIndex_; }

  /// The thread's work: until the input queue is aborted or has an end marker next.
  void Run() override;

private:
  TSpoolFileData Fetch();
  void Process(TSpoolFileData& data);
  void createAndWriteFile(TSpoolFileData& data);
  void delegateToFlushAndCloseTask(IImage* image);
  void setImageSavedEvent(int index);
  void queueProcessedBufferForReuse(const TSpoolFileData& data);

  QuorinUtility::TQuorinTaskLauncher** launchers_;
  ISpooler* spooler_;
  int launcherCount_;
  TSpoolQueue* inputQueue_;
  TSpoolQueue* reuseQueue_;
  IDispatchRoutine* dispatchRoutine_;
  const TSpoolFileData endMarker_;
  int nextLauncher_ = 0; // the task's thread only
  std::atomic<int> lastSavedImageIndex_{0};
  TPerformanceLog performanceLog_;
  std::unique_ptr<QuorinUtility::TQuorinWorkThread> workThread_; // last: it uses all the others
};
