// SPDX-License-Identifier: MIT
// The backend of the simulated cameras.
#pragma once

#include "vxcore/backend/TBackendTable.h"
#include "vxcore/simulated/TDeviceStatus.h"
#include "vxcore/simulated/TSimulatorConfiguration.h"

#include <string>
#include <string_view>
#include <vector>

namespace vxsim {

/// Offers the cameras of a configuration as devices. Owned by TBackendTable, which outlives the open cameras.
class TSimulatedBackend final : public vxcore::IDeviceBackend
{
public:
  explicit TSimulatedBackend(TSimulatorConfiguration configuration);

  // The backend's row in the table.
  static bool OwnsSection(std::string_view section);
  static std::unique_ptr<vxcore::IDeviceBackend> Make(const vxcore::TBackendEntries* entries, std::string& error);

  int Enumerate() override { return static_cast<int>(configuration_.cameras.size()); }
  int Open(int index, const vxcore::TDeviceContext& context, std::unique_ptr<vxcore::IDevice>& device) override;

  /// What is known of a device; guarded by the device's lock.
  TDeviceStatus& Status(int index) { return status_[static_cast<size_t>(index)]; }

private:
  bool Check(std::string& error) const;

  const TSimulatorConfiguration configuration_;
  std::vector<TDeviceStatus> status_;
};

} // namespace vxsim
