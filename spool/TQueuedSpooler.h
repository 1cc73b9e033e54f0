// SPDX-License-Identifier: MIT
// Spools images while the acquisition thread goes on.
#pragma once

#include "spool/ISpoolAlgorithm.h"
#include "spool/TSpoolQueue.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <vector>

class ISpooler;
class TCreateAndWriteFileTask;
class TSpoolFault;

namespace QuorinUtility {
class TQuorinTaskLauncher;
}

/// Queues images for a write task, which makes their files and copies them, has them closed by launchers, and
/// requeues the slots with the camera of the run, whichever is the current one. Owned by the run's pipeline; borrows
/// spooler and fault. After an image that could not be written, no other is begun.
class TQueuedSpooler final : public ISpoolAlgorithm
{
public:
  /// With fewer than one thread, images are closed by the write task's thread.
  /// @p slots is how many slots are queued with the camera @p coreHandle, 0 when that is not known.
  TQueuedSpooler(ISpooler* spooler, TSpoolFault* fault, int threadCount, std::uint64_t slots, int coreHandle);
  /// Images that have not been copied yet are dropped.
  ~TQueuedSpooler() override;

  /// @p buffer must stay unchanged until its slot is requeued. Blocks while the camera has no slot left.
  int Spool(int index, unsigned char* buffer, int sizeBytes) override;
  bool RequeuesSlots() const override { return true; }
  void Abort() override;
  void Finish() override;

private:
  class TSlotReturnTask;

  void WaitForSlot();

  TSpoolFault* const fault_;
  const std::uint64_t slots_;
  std::atomic<bool> aborted_{false};
  std::uint64_t queued_ = 0;
  TSpoolQueue input_;
  TSpoolQueue reuse_;
  TQueuingSpoolAlgorithm queuing_;
  std::vector<std::unique_ptr<QuorinUtility::TQuorinTaskLauncher>> launchers_;
  std::vector<QuorinUtility::TQuorinTaskLauncher*> launcherPointers_;
  std::unique_ptr<TSlotReturnTask> slotReturn_;
  std::unique_ptr<TCreateAndWriteFileTask> writeTask_;
};
