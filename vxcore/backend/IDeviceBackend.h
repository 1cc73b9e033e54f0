// SPDX-License-Identifier: MIT
// A family of devices that are found, opened and driven in one way.
#pragma once

#include "vxcore/backend/IDevice.h"
#include "vxcore/backend/IFrameFaults.h"

#include <memory>
#include <mutex>

namespace vxcore {

/// What an open device uses of the library; it outlives the device.
struct TDeviceContext
{
  std::mutex& mutex;    ///< the device's lock
  IFrameFaults& faults; ///< for a device with AppliesFrameFaults()
};

/// Made by a row of the table in vxcore/backends.cpp from its sections of the configuration; owned by
/// TBackendTable. Any thread may call Enumerate() at any time, and Open() for different devices at the same time: for one
/// device there is one Open() at a time, with the device's lock.
class IDeviceBackend
{
public:
  virtual ~IDeviceBackend() = default;

  /// How many devices there are. Called often, so a search that takes time is done when the backend is made.
  virtual int Enumerate() = 0;
  /// Opens device @p index (0 to Enumerate() - 1).
  virtual int Open(int index, const TDeviceContext& context, std::unique_ptr<IDevice>& device) = 0;
};

} // namespace vxcore
