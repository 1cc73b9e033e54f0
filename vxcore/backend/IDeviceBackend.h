// SPDX-License-Identifier: MIT
// A source of devices: the simulator is the built-in one, others can stand beside it.
#pragma once

#include "vxcore/backend/IDevice.h"

#include <memory>
#include <mutex>

namespace vxsim {

/// A family of devices that are found, opened and driven in one way.
/// Owned by the device table, which numbers the devices of all backends one after the other. Called with the
/// table's lock held, so an implementation needs no lock of its own for these operations.
class IDeviceBackend
{
public:
  virtual ~IDeviceBackend() = default;

  /// How many devices there are; called again at each first initialisation.
  virtual int Enumerate() = 0;
  /// Opens device @p index (0 to Enumerate() - 1), which will be driven under @p deviceMutex.
  virtual int Open(int index, std::mutex& deviceMutex, std::unique_ptr<IDevice>& device) = 0;
};

} // namespace vxsim
