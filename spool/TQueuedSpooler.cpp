// SPDX-License-Identifier: MIT
// Spools images without holding up the acquisition thread.
#include "spool/TQueuedSpooler.h"

#include "spool/launching.h"
#include "spool/TCreateAndWriteFileTask.h"
#include "spool/TSlotReturnTask.h"
#include "spool/TSpoolFault.h"
#include "utility/TQuorinTaskLauncher.h"

#include <cerrno>
#include <chrono>

namespace {

constexpr std::chrono::milliseconds kWaitSlice{50};

} // namespace

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

// A camera without a slot brings no frame, and it is not the camera that is late then: whoever waited for a frame
// would take it for that.
void TQueuedSpooler::WaitForSlot()
{
  if (slots_ == 0 || queued_ < slots_) return;
  while (!aborted_ && !fault_->IsRaised() && !slotReturn_->WaitForImages(queued_ - slots_ + 1, kWaitSlice)) {
  }
}

void TQueuedSpooler::Abort()
{
  aborted_ = true;
  input_.Abort();
}

// The write task ends with its queue, so it may only be told when it has taken the last image. After a failure
// nothing more can be written.
void TQueuedSpooler::Finish()
{
  while (!aborted_ && !fault_->IsRaised() && !slotReturn_->WaitForImages(queued_, kWaitSlice))
    if (static_cast<std::uint64_t>(writeTask_->GetLastSavedImageIndex()) >= queued_) break;
  writeTask_.reset();
  slotReturn_.reset();
  launchers_.clear();
}
