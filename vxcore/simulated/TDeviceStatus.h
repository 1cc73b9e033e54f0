// SPDX-License-Identifier: MIT
// What is known of a simulated device whether it is open or not.
#pragma once

#include "vxcore/backend/TPlug.h"
#include "vxcore/simulated/TI2cDevices.h"

#include "vxcore_simulator.h"

#include <map>
#include <utility>

namespace vxsim {

class TSimulatedCamera;

/// Outlives the open camera: counters of its last opening, whether it is plugged in, and the power-on values of
/// its potentiometers. Owned by the backend, guarded by the device's lock.
struct TDeviceStatus
{
  TSimulatedCamera* camera = nullptr; ///< from its opening to the end of its Close()
  VXSIM_Statistics statistics{};
  vxcore::TPlug plug;
  std::map<std::pair<int, uint8_t>, TPotentiometerMemory> potentiometers; ///< by bus and address
};

} // namespace vxsim
