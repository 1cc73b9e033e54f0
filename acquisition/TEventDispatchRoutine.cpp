// SPDX-License-Identifier: MIT
// The per-frame notification of a camera.
#include "acquisition/TEventDispatchRoutine.h"

#include "acquisition/TAcquisitionEventHandler.h"

void TEventDispatchRoutine::Signal()
{
  signals_.fetch_add(1, std::memory_order_relaxed);
  if (TAcquisitionEventHandler* const handler = handler_.load(std::memory_order_acquire)) handler->Signal();
}
