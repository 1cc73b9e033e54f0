// SPDX-License-Identifier: MIT
// The built-in backend: the cameras of a configuration.
#pragma once

#include "vxcore/backend/IDeviceBackend.h"
#include "vxcore/simulated/camera/TDeviceStatus.h"
#include "vxcore/simulated/config/TSimulatorConfiguration.h"

#include <string>
#include <vector>

namespace vxsim {

/// Offers the cameras of a configuration as devices. Owned by TDeviceTable, which outlives the open cameras.
class TSimulatedBackend final : public IDeviceBackend
{
public:
  explicit TSimulatedBackend(TSimulatorConfiguration configuration);

  /// Tries whether every camera can be built as configured. False, with a message, when not.
  bool Check(std::string& error);

  int Enumerate() override { return static_cast<int>(configuration_.cameras.size()); }
  int Open(int index, std::mutex& deviceMutex, std::unique_ptr<IDevice>& device) override;

  /// What is known of a device; guarded by the device's lock.
  TDeviceStatus& Status(int index) { return status_[static_cast<size_t>(index)]; }

private:
  const TSimulatorConfiguration configuration_;
  std::vector<TDeviceStatus> status_;
};

} // namespace vxsim
