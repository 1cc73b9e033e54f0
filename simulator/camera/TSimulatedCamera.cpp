// SPDX-License-Identifier: MIT
// A simulated camera while it is open.
#include "simulator/camera/TSimulatedCamera.h"

#include "simulator/camera/TCameraFeatures.h"

namespace vxsim {

TSimulatedCamera::TSimulatedCamera(const TCameraModel& model, const TCameraConfiguration& configuration,
                                   TDeviceStatus& status, std::mutex& deviceMutex, int device)
    : status_(status), state_(model, configuration), acquisition_(state_, status, deviceMutex, device)
{
}

bool TSimulatedCamera::Build(std::string& error)
{
  TCameraActions actions;
  actions.start = [this](TDeviceLock&) { return acquisition_.Start(); };
  actions.stop = [this](TDeviceLock& lock) { return acquisition_.Stop(lock); };
  actions.softwareTrigger = [this] {
    acquisition_.Trigger();
    return VX_SUCCESS;
  };
  actions.timestampTicks = [this] { return acquisition_.TimestampTicks(); };
  actions.resetTimestamp = [this] { acquisition_.ResetTimestamp(); };
  return BuildCameraFeatures(state_, actions, features_, error);
}

int TSimulatedCamera::CheckPresent()
{
  return status_.plugged || status_.IsPresent() ? VX_SUCCESS : VX_ERR_COMMUNICATION;
}

int TSimulatedCamera::QueueBuffer(TDeviceLock& lock, unsigned char* buffer, int sizeBytes)
{
  return acquisition_.Queue(lock, buffer, sizeBytes);
}

int TSimulatedCamera::WaitBuffer(TDeviceLock& lock, unsigned char** buffer, int* sizeBytes, unsigned int timeoutMs)
{
  return acquisition_.Wait(lock, buffer, sizeBytes, timeoutMs);
}

void TSimulatedCamera::FireTrigger()
{
  if (state_.Choice(L"TriggerMode").Text().starts_with(L"External")) acquisition_.Trigger();
}

} // namespace vxsim
