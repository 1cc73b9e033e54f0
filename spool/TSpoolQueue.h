// SPDX-License-Identifier: MIT
// Frames that wait for being written, or for being used again.
#pragma once

#include "spool/TSpoolFileData.h"
#include "utility/TQuorinCriticalSection.h"
#include "utility/TQuorinEvent.h"

#include <deque>

/// First in, first out. Thread-safe, for any number of writers and readers. No reader may be waiting when it is
/// destroyed. Only Queue() throws, when memory is short; the queue is then as it was.
class TSpoolQueue final
{
public:
  TSpoolQueue();

  void Queue(const TSpoolFileData& data);
  /// The first element. Blocks until there is one; in an aborted queue the default value, the end marker, at once.
  TSpoolFileData Retrieve();
  bool IsEmpty();
  /// Wakes every reader, for good: what is left in the queue stays there.
  void Abort();
  bool IsAborted();

private:
  bool popFirst(TSpoolFileData& data);

  std::deque<TSpoolFileData> queue_;
  QuorinUtility::TQuorinCriticalSection queueLock_; // guards queue_
  bool aborted_ = false;
  QuorinUtility::TQuorinCriticalSection abortedLock_; // guards aborted_; taken behind queueLock_ or alone
  QuorinUtility::TQuorinEvent available_;             // stays set while there are elements, and once aborted
};
