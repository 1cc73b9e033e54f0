// SPDX-License-Identifier: MIT
// The control functions of vxcore_simulator.h that concern one simulated camera, in its order.
#include "vxcore_simulator.h"

#include "vxcore/front/TDeviceTable.h"
#include "vxcore/simulated/TSimulatedBackend.h"
#include "vxcore/simulated/TSimulatedCamera.h"

#include <new>

using namespace vxsim;
using vxcore::TBackendTable;
using vxcore::TDeviceTable;

static_assert(kMaxCameras <= TDeviceTable::kMaxDevices);

namespace {

/// Runs @p body(lock, status) on a simulated device, open or not. Devices of other backends answer "not available".
template <typename Body>
int OnDevice(int device, Body&& body) noexcept
{
  try {
    return TDeviceTable::Instance().WithDevice(
        device, [&body](TDeviceLock& lock, const TBackendTable::TPlace& place) -> int {
          auto* simulated = dynamic_cast<TSimulatedBackend*>(place.backend);
          return simulated ? body(lock, simulated->Status(place.index)) : VX_ERR_NOT_AVAILABLE;
        });
  } catch (const std::bad_alloc&) {
    return VX_ERR_OUT_OF_MEMORY;
  }
}

/// Runs @p body(lock, camera) on a simulated device that is open.
template <typename Body>
int OnOpenCamera(int device, Body&& body) noexcept
{
  return OnDevice(device, [&body](TDeviceLock& lock, TDeviceStatus& status) {
    return status.camera ? body(lock, *status.camera) : VX_ERR_NOT_AVAILABLE;
  });
}

} // namespace

extern "C" {

int VXSIM_GetStatistics(int device, VXSIM_Statistics* statistics)
{
  if (!statistics) return VX_ERR_NULL_ARGUMENT;
  return OnDevice(device, [statistics](TDeviceLock&, const TDeviceStatus& status) {
    *statistics = status.camera ? status.camera->Acquisition().Statistics() : status.statistics;
    return VX_SUCCESS;
  });
}

int VXSIM_PushFrame(int device, const void* bytes, int sizeBytes)
{
  return OnOpenCamera(device, [bytes, sizeBytes](TDeviceLock& lock, TSimulatedCamera& camera) {
    return camera.Acquisition().PushFrame(lock, static_cast<const unsigned char*>(bytes), sizeBytes);
  });
}

int VXSIM_PushFrames(int device, int count)
{
  return OnOpenCamera(device, [count](TDeviceLock& lock, TSimulatedCamera& camera) {
    int first = VX_SUCCESS;
    for (int i = 0; i < count; ++i) {
      const int code = camera.Acquisition().PushFrame(lock, nullptr, 0);
      if (first == VX_SUCCESS) first = code;
      if (code == VX_ERR_NOT_AVAILABLE) break;
    }
    return first;
  });
}

int VXSIM_PushWaitCode(int device, int code)
{
  return OnOpenCamera(device, [code](TDeviceLock&, TSimulatedCamera& camera) {
    camera.Acquisition().PushCode(code);
    return VX_SUCCESS;
  });
}

int VXSIM_FireTrigger(int device)
{
  return OnOpenCamera(device, [](TDeviceLock&, TSimulatedCamera& camera) {
    camera.FireTrigger();
    return VX_SUCCESS;
  });
}

int VXSIM_AdvanceTime(int device, double seconds)
{
  return OnOpenCamera(device, [seconds](TDeviceLock&, TSimulatedCamera& camera) {
    return camera.Acquisition().AdvanceTime(seconds);
  });
}

int VXSIM_SetPlugged(int device, int plugged)
{
  return OnDevice(device, [plugged](TDeviceLock&, TDeviceStatus& status) {
    status.plug.Set(plugged != 0);
    if (plugged == 0 && status.camera) status.camera->Acquisition().Unplug();
    return VX_SUCCESS;
  });
}

} // extern "C"
