// SPDX-License-Identifier: MIT
// Whether a device is plugged in.
#pragma once

#include "vxcore/backend/IFrameFaults.h"

#include <chrono>
#include <optional>

namespace vxcore {

/// The plug of a device, which a rule of the fault plan or a test pulls. Guarded by the device's lock.
class TPlug final
{
public:
  /// Plugged in, or out until this is called again.
  void Set(bool isIn)
  {
    isIn_ = isIn;
    inAgainAt_.reset();
  }
  /// Pulls it as an `unplug` or `replug` rule says.
  void Pull(const TPlannedFault& fault)
  {
    Set(false);
    if (fault.kind == EPlannedFault::Replug)
      inAgainAt_ = TClock::now() + std::chrono::nanoseconds(fault.durationNs);
  }
  /// Whether the device answers now; plugs it in again when its time has come.
  bool IsIn()
  {
    if (!isIn_ && inAgainAt_ && TClock::now() >= *inAgainAt_) Set(true);
    return isIn_;
  }

private:
  using TClock = std::chrono::steady_clock;

  bool isIn_ = true;
  std::optional<TClock::time_point> inAgainAt_;
};

} // namespace vxcore
