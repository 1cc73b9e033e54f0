// SPDX-License-Identifier: MIT
// The queue of runs that go on until they are aborted.
#pragma once

#include "acquisition/TRingDispatchQueue.h"
#include "features/current_core_handle.h"

/// Counts each frame and requeues its slot at once, so that a run needs no end and new images overwrite old ones. Owned
/// by the acquisition manager.
class TDispatchQueue_Requeue final : public TRingDispatchQueue
{
public:
  explicit TDispatchQueue_Requeue(TCircularBuffer* circularBuffer, int coreHandle = kNoCoreHandle)
      : TRingDispatchQueue(circularBuffer, coreHandle)
  {
  }

  int Dispatch(unsigned char* buffer, int sizeBytes) override
  {
    if (CountFrame(buffer)) RequeueSlot(buffer, sizeBytes);
    return 0;
  }
};
