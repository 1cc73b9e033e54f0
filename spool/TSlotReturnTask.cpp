// SPDX-License-Identifier: MIT
// Gives frame slots back to the camera once their images are written.
#include "spool/TSlotReturnTask.h"

#include "features/device_access.h"
#include "spool/TSpoolFault.h"
#include "spool/TSpoolQueue.h"

#include <string>

using QuorinUtility::TQuorinWorkThread;

TSlotReturnTask::TSlotReturnTask(TSpoolQueue* inputQueue, TSpoolQueue* reuseQueue, TSpoolFault* fault,
                                 int coreHandle)
    : inputQueue_(inputQueue),
      reuseQueue_(reuseQueue),
      fault_(fault),
      coreHandle_(coreHandle),
      thread_(this, TQuorinWorkThread::eNormalPriority, "vxmcd-slots")
{
}

TSlotReturnTask::~TSlotReturnTask()
{
  reuseQueue_->Abort();
  thread_.WaitForCompletion();
}

bool TSlotReturnTask::WaitForImages(std::uint64_t count, std::chrono::milliseconds timeout)
{
  std::unique_lock lock(mutex_);
  return returned_.wait_for(lock, timeout, [&] { return images_ >= count; });
}

void TSlotReturnTask::Run()
{
  const TSpoolFileData end;
  for (TSpoolFileData data = reuseQueue_->Retrieve(); !(data == end); data = reuseQueue_->Retrieve()) {
    if (data.error != 0) {
      if (!fault_->IsRaised()) fault_->Raise("cannot write image", std::to_string(data.index + 1), 0);
      inputQueue_->Abort();
    }
    QueueBuffer(coreHandle_, data.buffer, data.sizeBytes);
    {
      const std::lock_guard lock(mutex_);
      ++images_;
    }
    returned_.notify_all();
  }
}
