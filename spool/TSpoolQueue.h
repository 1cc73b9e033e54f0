// SPDX-License-Identifier: MIT
// Frames that wait to be written, or for their slots to be used again.
#pragma once

#include "spool/ISpoolAlgorithm.h"
#include "utility/TQuorinCriticalSection.h"
#include "utility/TQuorinEvent.h"

#include <deque>

class IImage;

/// One frame on its way to disk. A plain value that owns nothing; the default one marks the end of a stream.
struct TSpoolFileData
{
  TSpoolFileData() = default;
  TSpoolFileData(unsigned char* frame, int imageIndex, int frameBytes)
      : buffer(frame), index(imageIndex), sizeBytes(frameBytes)
  {
  }

  /// Compares what is to be written, not how far that has come.
  friend bool operator==(const TSpoolFileData& left, const TSpoolFileData& right)
  {
    return left.buffer == right.buffer && left.index == right.index && left.sizeBytes == right.sizeBytes;
  }

  unsigned char* buffer = nullptr; ///< the frame's slot in the ring
  int index = 0;                   ///< image number from 0
  int sizeBytes = 0;
  IImage* image = nullptr; ///< the image it was written to, which may be closed already
  int error = 0;           ///< 1 when it could not be written
};

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

  QuorinUtility::TQuorinCriticalSection queueLock_;
  std::deque<TSpoolFileData> queue_ GUARDED_BY(queueLock_);
  QuorinUtility::TQuorinCriticalSection abortedLock_; // acquired after queueLock_ or alone
  bool aborted_ GUARDED_BY(abortedLock_) = false;
  QuorinUtility::TQuorinEvent available_; // stays set while there are elements, and once aborted
};

/// Queues frames for a TCreateAndWriteFileTask. Borrows the queue. Thread-safe.
class TQueuingSpoolAlgorithm final : public ISpoolAlgorithm
{
public:
  explicit TQueuingSpoolAlgorithm(TSpoolQueue* queue) : queue_(queue) {}

  /// Never blocks and copies nothing: @p buffer must stay unchanged until it arrives in the write task's reuse
  /// queue. Returns 1; whether the frame could be written shows there. 0 only without a queue or memory.
  int Spool(int index, unsigned char* buffer, int sizeBytes) override;

private:
  TSpoolQueue* queue_;
};
