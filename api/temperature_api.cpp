// SPDX-License-Identifier: MIT
// Cooling and temperature.
#include "api/entry_points.h"
#include "api/numbered_texts.h"
#include "api/result_maps.h"
#include "api/TCameraUse.h"
#include "features/feature_access.h"
#include "features/feature_names.h"
#include "utility/outputs.h"
#include "vxmcd.h"

#include <limits>

namespace EntryPoint {

namespace {

constexpr float kUnknownDegrees = -999.0F;

// Rounds towards zero. Values outside the range of an integer become the nearest one, and NaN becomes 0.
int Truncate(double value)
{
  using TLimits = std::numeric_limits<int>;
  if (value >= TLimits::max()) return TLimits::max();
  if (value <= TLimits::min()) return TLimits::min();
  return value == value ? static_cast<int>(value) : 0;
}

constexpr TNumberedText kFanModes[] = {{0, FeatureText::kOn}, {1, FeatureText::kLow}, {2, FeatureText::kOff}};

unsigned int SwitchCooler(bool isOn)
{
  const TCameraUse camera;
  if (!camera) return RC_NOT_INITIALIZED;
  // Callers rely on success even if the camera refuses.
  WriteBool(camera.CoreHandle(), Feature::kSensorCooling, isOn ? 1 : 0);
  return RC_SUCCESS;
}

// Leaves the output as it is when the read fails.
void ReadDegrees(int coreHandle, const wchar_t* feature, float* output)
{
  double degrees = 0.0;
  if (!isImplemented(coreHandle, feature)) return;
  if (ReadFloat(coreHandle, feature, degrees) == VX_SUCCESS) WriteOutput(output, degrees);
}

} // namespace

unsigned int SetTemperature(int degrees)
{
  const TCameraUse camera;
  if (!camera) return RC_NOT_INITIALIZED;
  if (!isImplemented(camera.CoreHandle(), Feature::kTargetSensorTemperature)) return RC_NOT_SUPPORTED;
  return ToResultCode(
      WriteFloat(camera.CoreHandle(), Feature::kTargetSensorTemperature, static_cast<double>(degrees)),
      ResultMap::kTargetTemperature);
}

unsigned int CoolerON(void)
{
  return SwitchCooler(true);
}

unsigned int CoolerOFF(void)
{
  return SwitchCooler(false);
}

unsigned int IsCoolerOn(int* on)
{
  const TCameraUse camera;
  if (!camera) return RC_NOT_INITIALIZED;
  if (!isImplemented(camera.CoreHandle(), Feature::kSensorCooling)) return RC_NOT_SUPPORTED;
  if (!on) return RC_P1_INVALID;
  ReadBool(camera.CoreHandle(), Feature::kSensorCooling, *on);
  return RC_SUCCESS;
}

unsigned int GetTemperatureF(float* degrees)
{
  if (!degrees) return RC_P1_INVALID;
  const TCameraUse camera;
  if (!camera) return RC_NOT_INITIALIZED;
  if (!isImplemented(camera.CoreHandle(), Feature::kSensorTemperature)) return RC_NOT_SUPPORTED;
  double value = 0.0;
  if (ReadFloat(camera.CoreHandle(), Feature::kSensorTemperature, value) != VX_SUCCESS) return RC_FEATURE_ERROR;
  *degrees = static_cast<float>(value);
  int status = 0;
  if (ReadIndex(camera.CoreHandle(), Feature::kTemperatureStatus, status) != VX_SUCCESS) return RC_SUCCESS;
  return ToResultCode(status, ResultMap::kCoolingState);
}

unsigned int GetTemperature(int* degrees)
{
  if (!degrees) return RC_P1_INVALID;
  float value = kUnknownDegrees;
  const unsigned int code = GetTemperatureF(&value);
  *degrees = Truncate(static_cast<double>(value));
  return code;
}

unsigned int GetTemperatureRange(int* minimum, int* maximum)
{
  WriteOutput(minimum, 0);
  WriteOutput(maximum, 0);
  const TCameraUse camera;
  if (!camera) return RC_NOT_INITIALIZED;
  if (!isImplemented(camera.CoreHandle(), Feature::kTargetSensorTemperature)) return RC_NOT_SUPPORTED;
  double highest = 0.0;
  double lowest = 0.0;
  ReadFloatMax(camera.CoreHandle(), Feature::kTargetSensorTemperature, highest);
  ReadFloatMin(camera.CoreHandle(), Feature::kTargetSensorTemperature, lowest);
  WriteOutput(maximum, Truncate(highest));
  WriteOutput(minimum, Truncate(lowest));
  return RC_SUCCESS;
}

unsigned int GetTemperatureStatus(float* sensor, float* target, float* third, float* fourth)
{
  for (float* const output : {sensor, target, third, fourth}) WriteOutput(output, 0.0F);
  const TCameraUse camera;
  if (!camera) return RC_NOT_INITIALIZED;
  ReadDegrees(camera.CoreHandle(), Feature::kTargetSensorTemperature, target);
  ReadDegrees(camera.CoreHandle(), Feature::kSensorTemperature, sensor);
  return RC_SUCCESS;
}

unsigned int SetFanMode(int mode)
{
  const TCameraUse camera;
  if (!camera) return RC_NOT_INITIALIZED;
  if (!isImplemented(camera.CoreHandle(), Feature::kFanSpeed)) return RC_NOT_SUPPORTED;
  int count = 0;
  ReadValueCount(camera.CoreHandle(), Feature::kFanSpeed, count); // not needed; kept as a call to the camera
  const wchar_t* const text = TextOf(mode, kFanModes, "fan modes");
  if (!text) return RC_P1_INVALID;
  return ToResultCode(WriteText(camera.CoreHandle(), Feature::kFanSpeed, text), RC_P1_INVALID);
}

} // namespace EntryPoint
