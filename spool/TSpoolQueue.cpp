// SPDX-License-Identifier: MIT
// Frames that wait to be written, or for their slots to be used again.
#include "spool/TSpoolQueue.h"

#include "utility/TAutoQuorinCriticalSection.h"
#include "utility/TQuorinLibDebugOutput.h"

#include <exception>

using QuorinUtility::TAutoQuorinCriticalSection;
using QuorinUtility::TQuorinEvent;
using QuorinUtility::TQuorinLibDebugOutput;

TSpoolQueue::TSpoolQueue() : available_(true, false) {}

void TSpoolQueue::Queue(const TSpoolFileData& data)
{
  const TAutoQuorinCriticalSection lock(&queueLock_);
  queue_.push_back(data);
  available_.Set();
}

TSpoolFileData TSpoolQueue::Retrieve()
{
  TSpoolFileData data;
  do {
    available_.Wait(TQuorinEvent::Infinite);
    if (IsAborted()) return {};
  } while (!popFirst(data)); // another reader may have been faster
  return data;
}

bool TSpoolQueue::popFirst(TSpoolFileData& data)
{
  const TAutoQuorinCriticalSection lock(&queueLock_);
  const bool found = !queue_.empty();
  if (found) {
    data = queue_.front();
    queue_.pop_front();
  }
  if (queue_.empty()) {
    // An abort since the look above has set the event for good.
    const TAutoQuorinCriticalSection abortedLock(&abortedLock_);
    if (!aborted_) available_.Reset();
  }
  return found;
}

bool TSpoolQueue::IsEmpty()
{
  const TAutoQuorinCriticalSection lock(&queueLock_);
  return queue_.empty();
}

void TSpoolQueue::Abort()
{
  const TAutoQuorinCriticalSection lock(&abortedLock_);
  aborted_ = true;
  available_.Set();
}

bool TSpoolQueue::IsAborted()
{
  const TAutoQuorinCriticalSection lock(&abortedLock_);
  return aborted_;
}

int TQueuingSpoolAlgorithm::Spool(int index, unsigned char* buffer, int sizeBytes)
{
  if (!queue_) {
    TQuorinLibDebugOutput::Output(__FILE__, __LINE__, __func__, "image %d: no queue", index);
    return 0;
  }
  try {
    queue_->Queue(TSpoolFileData(buffer, index, sizeBytes));
    return 1;
  } catch (const std::exception& error) {
    TQuorinLibDebugOutput::Output(__FILE__, __LINE__, __func__, "image %d not queued: %s", index, error.what());
    return 0;
  }
}
