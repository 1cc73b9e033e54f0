// SPDX-License-Identifier: MIT
// A simulated camera while it is open.
#include "vxcore/simulated/TSimulatedCamera.h"

#include "vxcore/simulated/TCameraFeatures.h"

#include <cmath>

namespace vxsim {

namespace {

constexpr int kRailFloor = 64;         ///< what a rail monitor reads of a wiper at 0
constexpr uint8_t kProbeRegisters = 2; ///< whole degrees, then 256ths

} // namespace

TSimulatedCamera::TSimulatedCamera(const TCameraModel& model, const TCameraConfiguration& configuration,
                                   TDeviceStatus& status, const TDeviceContext& context)
    : status_(status), state_(model, configuration), acquisition_(state_, status, context)
{
}

bool TSimulatedCamera::Build(std::string& error)
{
  TCameraActions actions;
  actions.start = [this](TDeviceLock& lock) { return acquisition_.Start(lock); };
  actions.stop = [this](TDeviceLock& lock) { return acquisition_.Stop(lock); };
  actions.softwareTrigger = [this] {
    acquisition_.Trigger();
    return VX_SUCCESS;
  };
  actions.timestampTicks = [this] { return acquisition_.TimestampTicks(); };
  actions.resetTimestamp = [this] { acquisition_.ResetTimestamp(); };
  actions.thermal = [this]() -> TThermalModel& { return acquisition_.Thermal(); };
  PopulateRegisters();
  if (!PopulateBuses(error)) return false;
  return BuildCameraFeatures(state_, actions, features_, error);
}

int TSimulatedCamera::CheckPresent()
{
  return status_.plug.IsIn() ? VX_SUCCESS : VX_ERR_COMMUNICATION;
}

int TSimulatedCamera::QueueBuffer(TDeviceLock& lock, unsigned char* buffer, int sizeBytes)
{
  return acquisition_.Queue(lock, buffer, sizeBytes);
}

int TSimulatedCamera::WaitBuffer(TDeviceLock& lock, unsigned char** buffer, int* sizeBytes, unsigned int timeoutMs)
{
  if (const int code = CheckPresent(); code != VX_SUCCESS) return code;
  return acquisition_.Wait(lock, buffer, sizeBytes, timeoutMs);
}

void TSimulatedCamera::Close(TDeviceLock& lock)
{
  acquisition_.Close(lock);
  status_.camera = nullptr;
}

void TSimulatedCamera::PopulateRegisters()
{
  TRegisterFile& registers = state_.registers;
  registers.AddReading(Register::kSensorWidth, [this] { return static_cast<uint32_t>(state_.sensorWidth); });
  registers.AddReading(Register::kSensorHeight, [this] { return static_cast<uint32_t>(state_.sensorHeight); });
  registers.AddReading(Register::kStatus,
                       [this] { return (state_.acquiring ? 1U : 0U) | (state_.thermal.IsCooling() ? 2U : 0U); });
  registers.AddReading(Register::kTemperature, [this] {
    return static_cast<uint32_t>(std::lround(acquisition_.Thermal().SensorCelsius() * 100.0));
  });
  // The memory's two banks take frames by turns.
  registers.AddReading(Register::kFifoFirst,
                       [this] { return static_cast<uint32_t>((acquisition_.FifoFill() + 1) / 2); });
  registers.AddReading(Register::kFifoSecond,
                       [this] { return static_cast<uint32_t>(acquisition_.FifoFill() / 2); });
}

/// Puts the model's devices on their buses, less those that the configuration takes off.
bool TSimulatedCamera::PopulateBuses(std::string& error)
{
  std::vector<TMissingI2cDevice> missing = state_.configuration.missingI2cDevices;
  for (const TModelI2cDevice& device : state_.model.i2cDevices) {
    const bool onController = device.bus == EI2cBus::Controller;
    const auto isIt = [&](const TMissingI2cDevice& one) {
      return one.onController == onController && one.address == device.address;
    };
    if (std::erase_if(missing, isIt) > 0) continue;
    (onController ? state_.controllerBus : state_.internalBus).Add(device.address, MakeI2cDevice(device));
  }
  if (missing.empty()) return true;
  error = std::string("model ") + state_.model.name + ": MissingI2C: no device has the address " +
          std::to_string(missing.front().address) + " on the " +
          (missing.front().onController ? "Controller" : "Internal") + " bus";
  return false;
}

std::unique_ptr<II2cDevice> TSimulatedCamera::MakeI2cDevice(const TModelI2cDevice& device)
{
  const int bus = static_cast<int>(device.bus);
  switch (device.kind) {
  case EI2cDevice::RailMonitor:
    return std::make_unique<TI2cMonitor>(TPotentiometerMemory::kWipers, [this, bus](uint8_t rail) {
      const TPotentiometer* source = firstPotentiometers_[bus];
      return static_cast<uint8_t>(kRailFloor + (source ? source->Wiper(rail) / 2 : 0));
    });
  case EI2cDevice::TemperatureProbe:
    return std::make_unique<TI2cMonitor>(kProbeRegisters, [this](uint8_t address) {
      const auto fixed = static_cast<int>(std::floor(acquisition_.Thermal().HeatSinkCelsius() * 256.0));
      return static_cast<uint8_t>(address == 0 ? fixed >> 8 : fixed);
    });
  case EI2cDevice::Potentiometer:
    break;
  }
  auto potentiometer = std::make_unique<TPotentiometer>(status_.potentiometers[{bus, device.address}]);
  if (!firstPotentiometers_[bus]) firstPotentiometers_[bus] = potentiometer.get();
  return potentiometer;
}

void TSimulatedCamera::FireTrigger()
{
  if (IsExternal(state_.Trigger())) acquisition_.Trigger();
}

} // namespace vxsim
