// SPDX-License-Identifier: MIT
// The queue of finite runs, whose images all stay.
#pragma once

#include "acquisition/TRingDispatchQueue.h"
#include "features/current_core_handle.h"

/// Counts each frame and leaves its slot with the application: such a run has a slot for every frame. Owned by the
/// acquisition manager.
class TDispatchQueue_Ignore final : public TRingDispatchQueue
{
public:
  explicit TDispatchQueue_Ignore(TCircularBuffer* circularBuffer, int coreHandle = kNoCoreHandle)
      : TRingDispatchQueue(circularBuffer, coreHandle)
  {
  }

  int Dispatch(unsigned char* buffer, int /*sizeBytes*/) override
  {
    CountFrame(buffer);
    return 0;
  }

private:
  bool ReusesSlots() const override { return false; }
};
