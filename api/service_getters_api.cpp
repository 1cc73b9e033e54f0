// SPDX-License-Identifier: MIT
// Values for maintenance tools. All but the first are the same for every camera, and need none.
#include "api/entry_points.h"
#include "api/TCameraUse.h"
#include "features/feature_access.h"
#include "features/feature_names.h"
#include "utility/outputs.h"
#include "vxmcd.h"

namespace EntryPoint {

namespace {

constexpr float kKeepCleanTimeSeconds = 0.001F;
constexpr float kTemperatureToleranceCelsius = 2.5F;
constexpr float kSpeedLimit = 1000.0F;
constexpr double kGatePulseFrequency = 1.0;

} // namespace

unsigned int vxsys_GetBaselineLevel(int* level)
{
  const TCameraUse camera;
  if (!camera) return RC_NOT_INITIALIZED;
  long long value = 0;
  if (ReadInt(camera.CoreHandle(), Feature::kBaselineLevel, value) != VX_SUCCESS) return RC_P1_INVALID;
  WriteOutput(level, value);
  return RC_SUCCESS;
}

unsigned int vxsys_GetKeepCleanTime(float* seconds)
{
  WriteOutput(seconds, kKeepCleanTimeSeconds);
  return RC_SUCCESS;
}

unsigned int vxsys_GetTemperatureTolerance(float* celsius)
{
  WriteOutput(celsius, kTemperatureToleranceCelsius);
  return RC_SUCCESS;
}

unsigned int vxsys_GetHSSpeedLimits(float* first, float* second, float* third)
{
  for (float* const limit : {first, second, third}) WriteOutput(limit, kSpeedLimit);
  return RC_SUCCESS;
}

unsigned int vxsys_GetDummyPixels(int* first, int* second, int* third, int* fourth)
{
  for (int* const pixels : {first, second, third, fourth}) WriteOutput(pixels, 0);
  return RC_SUCCESS;
}

unsigned int vxsys_GetMinimumNumberInSeries(int* number)
{
  WriteOutput(number, 1);
  return RC_SUCCESS;
}

unsigned int vxsys_IsVacuumCooling(int* isVacuum)
{
  WriteOutput(isVacuum, 1);
  return RC_SUCCESS;
}

unsigned int vxsys_IsTemperatureAvailableDuringAcquisition(int* isAvailable)
{
  if (!isAvailable) return RC_P1_INVALID;
  *isAvailable = 1;
  return RC_SUCCESS;
}

unsigned int vxsys_GetDDGIOCFrequencyRange(double* minimum, double* maximum)
{
  for (double* const frequency : {minimum, maximum}) WriteOutput(frequency, kGatePulseFrequency);
  return RC_NOT_SUPPORTED;
}

} // namespace EntryPoint
