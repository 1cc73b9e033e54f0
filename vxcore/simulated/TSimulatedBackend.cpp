// SPDX-License-Identifier: MIT
// The backend of the simulated cameras.
#include "vxcore/simulated/TSimulatedBackend.h"

#include "vxcore/simulated/TSimulatedCamera.h"

namespace vxsim {

namespace {

/// For cameras that are built only to see whether they can be.
class TNoFaults final : public vxcore::IFrameFaults
{
public:
  TNoFaults() : IFrameFaults(kNever) {}
  std::vector<vxcore::TPlannedFault> OnCamera() override { return {}; }
  std::vector<vxcore::TPlannedFault> OnFrame() override { return {}; }
  std::vector<vxcore::TPlannedFault> OnMetadata() override { return {}; }

private:
  static constexpr std::atomic<bool> kNever{false};
};

} // namespace

TSimulatedBackend::TSimulatedBackend(TSimulatorConfiguration configuration)
    : configuration_(std::move(configuration)), status_(configuration_.cameras.size())
{
}

bool TSimulatedBackend::OwnsSection(std::string_view section)
{
  return section == "Simulator" || section.starts_with("Camera");
}

std::unique_ptr<vxcore::IDeviceBackend> TSimulatedBackend::Make(const vxcore::TBackendEntries* entries,
                                                                std::string& error)
{
  TSimulatorConfiguration configuration = TSimulatorConfiguration::BuiltIn();
  if (entries && !TSimulatorConfiguration::Read(*entries, configuration, error)) return nullptr;
  auto backend = std::make_unique<TSimulatedBackend>(std::move(configuration));
  return backend->Check(error) ? std::move(backend) : nullptr;
}

/// Tries whether every camera can be built as configured. False, with a message, when not.
bool TSimulatedBackend::Check(std::string& error) const
{
  int index = 0;
  for (const TCameraConfiguration& camera : configuration_.cameras) {
    std::mutex mutex;
    TNoFaults faults;
    TDeviceStatus status;
    if (!TSimulatedCamera(*FindCameraModel(camera.model), camera, status, {mutex, faults}).Build(error)) {
      error = "[Camera" + std::to_string(index) + "]: " + error;
      return false;
    }
    ++index;
  }
  return true;
}

int TSimulatedBackend::Open(int index, const TDeviceContext& context, std::unique_ptr<IDevice>& device)
{
  TDeviceStatus& status = Status(index);
  if (!status.plug.IsIn()) return VX_ERR_COMMUNICATION;
  status.statistics = {};
  const TCameraConfiguration& camera = configuration_.cameras[static_cast<size_t>(index)];
  auto opened = std::make_unique<TSimulatedCamera>(*FindCameraModel(camera.model), camera, status, context);
  std::string error;
  if (!opened->Build(error)) return VX_ERR_NO_SUCH_DEVICE;
  status.camera = opened.get();
  device = std::move(opened);
  return VX_SUCCESS;
}

} // namespace vxsim
