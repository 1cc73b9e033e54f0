// SPDX-License-Identifier: MIT
// The built-in backend: the cameras of a configuration.
#include "vxcore/simulated/camera/TSimulatedBackend.h"

#include "vxcore/simulated/camera/TSimulatedCamera.h"

namespace vxsim {

TSimulatedBackend::TSimulatedBackend(TSimulatorConfiguration configuration)
    : configuration_(std::move(configuration)), status_(configuration_.cameras.size())
{
}

bool TSimulatedBackend::Check(std::string& error)
{
  int index = 0;
  for (const TCameraConfiguration& camera : configuration_.cameras) {
    std::mutex mutex;
    TDeviceStatus status;
    if (!TSimulatedCamera(*FindCameraModel(camera.model), camera, status, mutex, index).Build(error)) {
      error = "[Camera" + std::to_string(index) + "]: " + error;
      return false;
    }
    ++index;
  }
  return true;
}

int TSimulatedBackend::Open(int index, std::mutex& deviceMutex, std::unique_ptr<IDevice>& device)
{
  TDeviceStatus& status = Status(index);
  if (!status.IsPresent()) return VX_ERR_COMMUNICATION;
  status.statistics = {};
  const TCameraConfiguration& camera = configuration_.cameras[static_cast<size_t>(index)];
  auto opened =
      std::make_unique<TSimulatedCamera>(*FindCameraModel(camera.model), camera, status, deviceMutex, index);
  std::string error;
  if (!opened->Build(error)) return VX_ERR_NO_SUCH_DEVICE;
  device = std::move(opened);
  return VX_SUCCESS;
}

} // namespace vxsim
