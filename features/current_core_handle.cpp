// SPDX-License-Identifier: MIT
// Which device of the feature library is the current camera.
#include "features/current_core_handle.h"

#include <atomic>

namespace {

std::atomic<int> currentCoreHandle{kNoCoreHandle};

} // namespace

int CurrentCoreHandle() noexcept
{
  return currentCoreHandle.load(std::memory_order_acquire);
}

void PublishCurrentCoreHandle(int coreHandle) noexcept
{
  currentCoreHandle.store(coreHandle, std::memory_order_release);
}
