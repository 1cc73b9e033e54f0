// SPDX-License-Identifier: MIT
// The control functions of vxcore_simulator.h, in its order.
#include "vxcore_simulator.h"

#include "vxcore/front/TCallLog.h"
#include "vxcore/front/TDeviceTable.h"
#include "vxcore/front/TFaultPlan.h"
#include "vxcore/simulated/config/TSimulatorConfiguration.h"

#include <algorithm>
#include <cstring>
#include <new>

using namespace vxsim;

namespace {

template <typename Body>
int Guarded(Body&& body) noexcept
{
  try {
    return body();
  } catch (const std::bad_alloc&) {
    return VX_ERR_OUT_OF_MEMORY;
  }
}

/// Runs @p body(lock, camera) on a device that is open.
template <typename Body>
int OnOpenCamera(int device, Body&& body) noexcept
{
  return Guarded([device, &body] {
    return TDeviceTable::Instance().WithSimulated(
        device, [&body](TDeviceLock& lock, TDeviceStatus&, TSimulatedCamera* camera) {
          return camera ? body(lock, *camera) : VX_ERR_NOT_AVAILABLE;
        });
  });
}

} // namespace

extern "C" {

int VXSIM_Reset(void)
{
  return Guarded([] {
    TDeviceTable::Instance().Reset(std::nullopt);
    return VX_SUCCESS;
  });
}

int VXSIM_Configure(const char* text)
{
  return Guarded([text] {
    LastErrorText().clear();
    if (!text) return VXSIM_Reset();
    TSimulatorConfiguration configuration;
    if (!TSimulatorConfiguration::Parse(text, configuration, LastErrorText())) return VX_ERR_OUT_OF_RANGE;
    TFaultRule rule;
    for (const std::string& line : configuration.faultRules) {
      if (!TFaultRule::Parse(line, rule, LastErrorText())) return VX_ERR_OUT_OF_RANGE;
    }
    if (!TSimulatedBackend(configuration).Check(LastErrorText())) return VX_ERR_OUT_OF_RANGE;
    TDeviceTable::Instance().Reset(std::string(text));
    return VX_SUCCESS;
  });
}

const char* VXSIM_GetLastError(void)
{
  return LastErrorText().c_str();
}

int VXSIM_GetInitialiseCount(void)
{
  return TDeviceTable::Instance().InitialiseCount();
}

int VXSIM_GetOpenCount(void)
{
  return TDeviceTable::Instance().OpenCount();
}

int VXSIM_GetStatistics(int device, VXSIM_Statistics* statistics)
{
  return Guarded([device, statistics] {
    if (!statistics) return VX_ERR_NULL_ARGUMENT;
    return TDeviceTable::Instance().WithSimulated(
        device, [statistics](TDeviceLock&, const TDeviceStatus& status, TSimulatedCamera* camera) {
          *statistics = camera ? camera->Acquisition().Statistics() : status.statistics;
          return VX_SUCCESS;
        });
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

int VXSIM_AddFault(const char* rule)
{
  return Guarded([rule] {
    LastErrorText().clear();
    if (!rule) return VX_ERR_NULL_ARGUMENT;
    return TFaultPlan::Instance().Add(rule, LastErrorText()) ? VX_SUCCESS : VX_ERR_OUT_OF_RANGE;
  });
}

int VXSIM_ClearFaults(void)
{
  TFaultPlan::Instance().Clear();
  return VX_SUCCESS;
}

uint64_t VXSIM_GetFaultsFired(void)
{
  return TFaultPlan::Instance().Fired();
}

int VXSIM_SetPlugged(int device, int plugged)
{
  return Guarded([device, plugged] {
    return TDeviceTable::Instance().WithSimulated(
        device, [plugged](TDeviceLock&, TDeviceStatus& status, TSimulatedCamera* camera) {
          status.plugged = plugged != 0;
          status.pluggedAgainAt.reset();
          if (!status.plugged && camera) camera->Acquisition().Unplug();
          return VX_SUCCESS;
        });
  });
}

int VXSIM_StartCallLog(int withWaits)
{
  TCallLog::Instance().Start(withWaits != 0);
  return VX_SUCCESS;
}

int VXSIM_StopCallLog(void)
{
  TCallLog::Instance().Stop();
  return VX_SUCCESS;
}

size_t VXSIM_GetCallCount(void)
{
  return TCallLog::Instance().Count();
}

int VXSIM_GetCall(size_t index, char* line, size_t length)
{
  return Guarded([index, line, length] {
    if (!line || length == 0) return VX_ERR_NULL_ARGUMENT;
    std::string text;
    if (!TCallLog::Instance().Get(index, text)) return VX_ERR_OUT_OF_RANGE;
    const size_t copied = std::min(text.size(), length - 1);
    std::memcpy(line, text.data(), copied);
    line[copied] = '\0';
    return VX_SUCCESS;
  });
}

} // extern "C"
