// SPDX-License-Identifier: MIT
// Cooling and temperature.
#include "features/current_core_handle.h"
#include "features/feature_access.h"
#include "features/feature_names.h"
#include "vxmcd.h"

#include <limits>

namespace {

constexpr float kUnknownDegrees = -999.0F;

// Towards zero; what no integer can hold becomes the nearest, and what is no number 0.
int Truncate(double value)
{
  using TLimits = std::numeric_limits<int>;
  if (value >= TLimits::max()) return TLimits::max();
  if (value <= TLimits::min()) return TLimits::min();
  return value == value ? static_cast<int>(value) : 0;
}

template <class T>
void Write(T* output, T value)
{
  if (output) *output = value;
}

// The index of "TemperatureStatus" as a result code.
unsigned int ToResultCode(int status)
{
  switch (status) {
  case 0:
    return RC_TEMP_OFF;
  case 1:
    return RC_TEMP_STABILIZED;
  case 3:
    return RC_TEMP_DRIFT;
  case 4:
    return RC_TEMP_NOT_STABILIZED;
  default:
    return RC_TEMP_NOT_REACHED;
  }
}

// The "FanSpeed" text of a fan mode, or null.
const wchar_t* FanText(int mode)
{
  switch (mode) {
  case 0:
    return FeatureText::kOn;
  case 1:
    return FeatureText::kLow;
  case 2:
    return FeatureText::kOff;
  default:
    return nullptr;
  }
}

unsigned int SwitchCooler(bool isOn)
{
  const int coreHandle = CurrentCoreHandle();
  if (coreHandle == kNoCoreHandle) return RC_NOT_INITIALIZED;
  WriteBool(coreHandle, Feature::kSensorCooling, isOn ? 1 : 0); // callers rely on success whatever it answers
  return RC_SUCCESS;
}

// Leaves the output as it is when the camera cannot tell.
void ReadDegrees(int coreHandle, const wchar_t* feature, float* output)
{
  double degrees = 0.0;
  if (!isImplemented(coreHandle, feature)) return;
  if (ReadFloat(coreHandle, feature, degrees) == VX_SUCCESS) Write(output, static_cast<float>(degrees));
}

} // namespace

unsigned int SetTemperature(int degrees)
{
  const int coreHandle = CurrentCoreHandle();
  if (coreHandle == kNoCoreHandle) return RC_NOT_INITIALIZED;
  if (!isImplemented(coreHandle, Feature::kTargetSensorTemperature)) return RC_NOT_SUPPORTED;
  switch (WriteFloat(coreHandle, Feature::kTargetSensorTemperature, static_cast<double>(degrees))) {
  case VX_SUCCESS:
    return RC_SUCCESS;
  case VX_ERR_NOT_READABLE:
    return RC_NOT_AVAILABLE;
  default:
    return RC_P1_INVALID;
  }
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
  const int coreHandle = CurrentCoreHandle();
  if (coreHandle == kNoCoreHandle) return RC_NOT_INITIALIZED;
  if (!isImplemented(coreHandle, Feature::kSensorCooling)) return RC_NOT_SUPPORTED;
  if (!on) return RC_P1_INVALID;
  ReadBool(coreHandle, Feature::kSensorCooling, *on);
  return RC_SUCCESS;
}

unsigned int GetTemperatureF(float* degrees)
{
  if (!degrees) return RC_P1_INVALID;
  const int coreHandle = CurrentCoreHandle();
  if (coreHandle == kNoCoreHandle) return RC_NOT_INITIALIZED;
  if (!isImplemented(coreHandle, Feature::kSensorTemperature)) return RC_NOT_SUPPORTED;
  double value = 0.0;
  if (ReadFloat(coreHandle, Feature::kSensorTemperature, value) != VX_SUCCESS) return RC_FEATURE_ERROR;
  *degrees = static_cast<float>(value);
  int status = 0;
  if (ReadIndex(coreHandle, Feature::kTemperatureStatus, status) != VX_SUCCESS) return RC_SUCCESS;
  return ToResultCode(status);
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
  Write(minimum, 0);
  Write(maximum, 0);
  const int coreHandle = CurrentCoreHandle();
  if (coreHandle == kNoCoreHandle) return RC_NOT_INITIALIZED;
  if (!isImplemented(coreHandle, Feature::kTargetSensorTemperature)) return RC_NOT_SUPPORTED;
  double highest = 0.0;
  double lowest = 0.0;
  ReadFloatMax(coreHandle, Feature::kTargetSensorTemperature, highest);
  ReadFloatMin(coreHandle, Feature::kTargetSensorTemperature, lowest);
  Write(maximum, Truncate(highest));
  Write(minimum, Truncate(lowest));
  return RC_SUCCESS;
}

unsigned int GetTemperatureStatus(float* sensor, float* target, float* third, float* fourth)
{
  for (float* const output : {sensor, target, third, fourth}) Write(output, 0.0F);
  const int coreHandle = CurrentCoreHandle();
  if (coreHandle == kNoCoreHandle) return RC_NOT_INITIALIZED;
  ReadDegrees(coreHandle, Feature::kTargetSensorTemperature, target);
  ReadDegrees(coreHandle, Feature::kSensorTemperature, sensor);
  return RC_SUCCESS;
}

unsigned int SetFanMode(int mode)
{
  const int coreHandle = CurrentCoreHandle();
  if (coreHandle == kNoCoreHandle) return RC_NOT_INITIALIZED;
  if (!isImplemented(coreHandle, Feature::kFanSpeed)) return RC_NOT_SUPPORTED;
  int count = 0;
  ReadValueCount(coreHandle, Feature::kFanSpeed, count); // not needed, but the camera sees these calls
  const wchar_t* const text = FanText(mode);
  if (!text) return RC_P1_INVALID;
  const int code = WriteText(coreHandle, Feature::kFanSpeed, text);
  return code == VX_SUCCESS ? RC_SUCCESS : RC_P1_INVALID;
}
