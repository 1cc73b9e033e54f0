// SPDX-License-Identifier: MIT
// Wakes waits for frames.
#include "vxcore/genicam/TWakeUp.h"

namespace vxgenicam {

void TWakeUp::Wake()
{
  {
    const std::lock_guard lock(mutex_);
    count_.fetch_add(1);
  }
  changed_.notify_all();
}

void TWakeUp::WaitAfter(std::uint64_t seen, TClock::time_point deadline)
{
  std::unique_lock lock(mutex_);
  changed_.wait_until(lock, deadline, [this, seen] { return count_.load() != seen; });
}

} // namespace vxgenicam
