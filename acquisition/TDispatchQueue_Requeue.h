// SPDX-License-Identifier: MIT
// The queue of runs that go on until they are aborted.
#pragma once

#include "acquisition/TRingDispatchQueue.h"
#include "features/current_core_handle.h"

/// Counts each frame and gives its slot straight back to the camera, so that the ring goes round for ever and old
/// images are overwritten. Owned by the acquisition manager.
class TDispatchQueue_Requeue final : public TRingDispatchQueue
{
public:
  explicit TDispatchQueue_Requeue(TCircularBuffer* circularBuffer, int coreHandle = kNoCoreHandle)
      : TRingDispatchQueue(circularBuffer, coreHandle)
  {
  }

  int Dispatch(unsigned char* buffer, int sizeBytes) override;
};
