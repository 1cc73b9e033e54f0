// SPDX-License-Identifier: MIT
// What is known of a simulated device whether it is open or not.
#pragma once

#include "vxcore/simulated/TI2cDevices.h"

#include "vxcore_simulator.h"

#include <chrono>
#include <map>
#include <optional>
#include <utility>

namespace vxsim {

class TSimulatedCamera;

/// Outlives the open camera: counters of its last opening, whether it is plugged in, and the power-on values of
/// its potentiometers. Owned by the backend, guarded by the device's lock.
struct TDeviceStatus
{
  TSimulatedCamera* camera = nullptr; ///< from its opening to the end of its Close()
  VXSIM_Statistics statistics{};
  bool plugged = true;
  std::optional<std::chrono::steady_clock::time_point> pluggedAgainAt;
  std::map<std::pair<int, uint8_t>, TPotentiometerMemory> potentiometers; ///< by bus and address

  /// Whether the device answers now; plugs it in again when its time has come.
  bool IsPresent()
  {
    if (plugged) return true;
    if (!pluggedAgainAt || std::chrono::steady_clock::now() < *pluggedAgainAt) return false;
    pluggedAgainAt.reset();
    plugged = true;
    return true;
  }
};

} // namespace vxsim
