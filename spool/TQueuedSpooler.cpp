// SPDX-License-Identifier: MIT
// Spools images while the acquisition thread goes on.
#include "spool/TQueuedSpooler.h"

#include "features/device_access.h"
#include "spool/image_writing.h"
#include "spool/TCreateAndWriteFileTask.h"
#include "spool/TSpoolFault.h"
#include "utility/TMutex.h"
#include "utility/TQuorinTaskLauncher.h"
#include "utility/TQuorinWorkThread.h"
#include "utility/TQuorinWorkThreadRoutine.h"

#include <cerrno>
#include <chrono>
#include <string>

using QuorinUtility::TQuorinWorkThread;

namespace {

constexpr std::chrono::milliseconds kWaitSlice{50};

} // namespace

/// Takes images that a write task has finished from its reuse queue, in order, and requeues their slots. It has its own
/// thread: while all slots wait for the disk, no frame arrives that would wake the acquisition thread. After an
/// image that could not be written it aborts the write task's input queue. Borrows queues and fault.
class TQueuedSpooler::TSlotReturnTask final : public QuorinUtility::TQuorinWorkThreadRoutine
{
public:
  TSlotReturnTask(TSpoolQueue* inputQueue, TSpoolQueue* reuseQueue, TSpoolFault* fault, int coreHandle)
      : inputQueue_(inputQueue),
        reuseQueue_(reuseQueue),
        fault_(fault),
        coreHandle_(coreHandle),
        thread_(this, TQuorinWorkThread::eNormalPriority, "vxmcd-slots")
  {
  }

  /// Aborts the reuse queue and waits for the thread.
  ~TSlotReturnTask() override
  {
    reuseQueue_->Abort();
    thread_.WaitForCompletion();
  }

  /// Whether there is a thread. False when it could not be made.
  bool IsAlive() const { return thread_.IsCreated(); }

  /// Blocks until the slots of this many images were requeued, or a slice of time is over. Returns whether they were.
  bool WaitForImages(std::uint64_t count) EXCLUDES(mutex_)
  {
    const TLock lock(mutex_);
    return returned_.WaitFor(mutex_, kWaitSlice, [&]() REQUIRES(mutex_) { return images_ >= count; });
  }

  /// The thread's work.
  void Run() override EXCLUDES(mutex_)
  {
    const TSpoolFileData end;
    for (TSpoolFileData data = reuseQueue_->Retrieve(); !(data == end); data = reuseQueue_->Retrieve()) {
      if (data.error != 0) {
        if (!fault_->IsRaised()) fault_->Raise("cannot write image", std::to_string(data.index + 1), 0);
        inputQueue_->Abort();
      }
      QueueBuffer(coreHandle_, data.buffer, data.sizeBytes);
      {
        const TLock lock(mutex_);
        ++images_;
      }
      returned_.NotifyAll();
    }
  }

private:
  TSpoolQueue* const inputQueue_;
  TSpoolQueue* const reuseQueue_;
  TSpoolFault* const fault_;
  const int coreHandle_;
  TMutex mutex_;
  TCondition returned_;
  std::uint64_t images_ GUARDED_BY(mutex_) = 0;
  TQuorinWorkThread thread_; // last: it uses all the others
};

TQueuedSpooler::TQueuedSpooler(ISpooler* spooler, TSpoolFault* fault, int threadCount, std::uint64_t slots,
                               int coreHandle)
    : fault_(fault), slots_(slots), queuing_(&input_), launchers_(MakeLaunchers(threadCount))
{
  for (const auto& launcher : launchers_) launcherPointers_.push_back(launcher.get());
  slotReturn_ = std::make_unique<TSlotReturnTask>(&input_, &reuse_, fault_, coreHandle);
  writeTask_ = std::make_unique<TCreateAndWriteFileTask>(
      launcherPointers_.data(), spooler, static_cast<int>(launcherPointers_.size()), &input_, &reuse_, nullptr);
  if (!writeTask_->IsAlive() || !slotReturn_->IsAlive()) fault_->Raise("no thread for", "the images", EAGAIN);
}

TQueuedSpooler::~TQueuedSpooler()
{
  Abort();
  writeTask_.reset();
}

int TQueuedSpooler::Spool(int index, unsigned char* buffer, int sizeBytes)
{
  ++queued_;
  const int result = queuing_.Spool(index, buffer, sizeBytes);
  WaitForSlot();
  return result;
}

// A camera without a slot delivers no frame, and a wait for one would end as if the camera were late.
void TQueuedSpooler::WaitForSlot()
{
  if (slots_ == 0 || queued_ < slots_) return;
  while (!aborted_ && !fault_->IsRaised() && !slotReturn_->WaitForImages(queued_ - slots_ + 1)) {
  }
}

void TQueuedSpooler::Abort()
{
  aborted_ = true;
  input_.Abort();
}

// The write task ends with its queue, so it may only be ended when it has taken the last image. After a failure nothing
// more can be written.
void TQueuedSpooler::Finish()
{
  while (!aborted_ && !fault_->IsRaised() && !slotReturn_->WaitForImages(queued_))
    if (static_cast<std::uint64_t>(writeTask_->GetLastSavedImageIndex()) >= queued_) break;
  writeTask_.reset();
  slotReturn_.reset();
  launchers_.clear();
}
