// SPDX-License-Identifier: MIT
// Frames that wait for being written, or for being used again.
#include "spool/TSpoolQueue.h"

#include "utility/TAutoQuorinCriticalSection.h"

using QuorinUtility::TAutoQuorinCriticalSection;
using QuorinUtility::TQuorinEvent;

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
