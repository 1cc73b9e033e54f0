// SPDX-License-Identifier: MIT
// Hands frames to a queue.
#pragma once

#include "spool/ISpoolAlgorithm.h"

class TSpoolQueue;

/// Queues frames for a TCreateAndWriteFileTask. Borrows the queue. Thread-safe.
class TQueuingSpoolAlgorithm final : public ISpoolAlgorithm
{
public:
  explicit TQueuingSpoolAlgorithm(TSpoolQueue* queue) : queue_(queue) {}

  /// Never blocks and copies nothing: @p buffer must stay as it is until it comes back on the write task's reuse
  /// queue. Returns 1; whether the frame could be written shows there. 0 only without a queue or memory.
  int Spool(int index, unsigned char* buffer, int sizeBytes) override;

private:
  TSpoolQueue* queue_;
};
