// SPDX-License-Identifier: MIT
// The backend of cameras that speak GigE Vision or USB3 Vision.
#pragma once

#include "vxcore/backend/IDeviceBackend.h"
#include "vxcore/genicam/TGenICamConfiguration.h"

namespace vxgenicam {

/// The cameras of the [GenICam] section, in its order; owner, threads and locks as IDeviceBackend says. Nothing is sent to
/// a camera before it is opened, except for "discover", which asks all networks when the backend is made.
class TGenICamBackend final : public vxcore::IDeviceBackend
{
public:
  explicit TGenICamBackend(TGenICamConfiguration configuration) : configuration_(std::move(configuration)) {}

  /// Null, with a message, when the entries have an error.
  static std::unique_ptr<vxcore::IDeviceBackend> Make(const vxcore::TBackendEntries& entries, std::string& error);

  int Enumerate() override { return static_cast<int>(configuration_.devices.size()); }
  int Open(int index, const vxcore::TDeviceContext& context, std::unique_ptr<vxcore::IDevice>& device) override;

private:
  const TGenICamConfiguration configuration_;
};

} // namespace vxgenicam
