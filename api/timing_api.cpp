// SPDX-License-Identifier: MIT
// Exposure and cycle times.
#include "api/call_log.h"
#include "api/entry_points.h"
#include "api/result_maps.h"
#include "api/TCameraUse.h"
#include "features/feature_access.h"
#include "features/feature_names.h"
#include "utility/outputs.h"

#include <optional>

namespace EntryPoint {

namespace {

// Reported for times that cannot be read.
constexpr float kDefaultExposureSeconds = 0.01F;
constexpr float kDefaultCycleSeconds = 0.03F;

/// Limits of a rate in Hz; empty when they cannot be read.
struct TRange
{
  std::optional<double> maximum;
  std::optional<double> minimum;
};

std::optional<double> ReadLimit(int (*read)(int, const wchar_t*, double&), int coreHandle, const wchar_t* feature)
{
  double limit = 0.0;
  if (read(coreHandle, feature, limit) != VX_SUCCESS) return std::nullopt;
  return limit;
}

// The rate for a cycle time: the request, limited to the known limits.
double RateFor(float seconds, const TRange& range)
{
  const double cycleSeconds = static_cast<double>(seconds);
  if (range.minimum && cycleSeconds > 1.0 / *range.minimum) return *range.minimum;
  if (range.maximum && 1.0 / *range.maximum > cycleSeconds) return *range.maximum;
  return 1.0 / cycleSeconds;
}

} // namespace

unsigned int SetExposureTime(float seconds)
{
  const TCameraUse camera;
  if (!camera) return RC_NOT_INITIALIZED;
  if (!isImplemented(camera.CoreHandle(), Feature::kExposureTime)) return RC_NOT_SUPPORTED;

  double exposureSeconds = static_cast<double>(seconds);
  double minimum = 0.0;
  ReadFloatMin(camera.CoreHandle(), Feature::kExposureTime, minimum);
  if (minimum > exposureSeconds) exposureSeconds = minimum;

  const int code = WriteFloat(camera.CoreHandle(), Feature::kExposureTime, exposureSeconds);
  if (code == VX_ERR_NOT_WRITABLE && camera.Manager().IsRunning()) return RC_ACQUIRING;
  return ToResultCode(code, ResultMap::kExposureTime);
}

unsigned int SetAccumulationCycleTime(float seconds)
{
  const TCameraUse camera;
  if (!camera) return RC_NOT_INITIALIZED;
  if (!isImplemented(camera.CoreHandle(), Feature::kAccumulateCount)) return RC_NOT_SUPPORTED;
  if (camera.AcquisitionMode().GetNumberAccumulations() < 2)
    return Refuse(RC_NOT_SUPPORTED, "fewer than 2 accumulations are set");
  if (!isImplemented(camera.CoreHandle(), Feature::kBurstRate)) return RC_SUCCESS;

  const TRange range{ReadLimit(ReadFloatMax, camera.CoreHandle(), Feature::kBurstRate), std::nullopt};
  return ToResultCode(WriteFloat(camera.CoreHandle(), Feature::kBurstRate, RateFor(seconds, range)),
                      RC_P1_INVALID);
}

unsigned int SetKineticCycleTime(float seconds)
{
  const TCameraUse camera;
  if (!camera) return RC_NOT_INITIALIZED;
  if (!isImplemented(camera.CoreHandle(), Feature::kFrameRate)) return RC_NOT_SUPPORTED;

  const TRange range{ReadLimit(ReadFloatMax, camera.CoreHandle(), Feature::kFrameRate),
                     ReadLimit(ReadFloatMin, camera.CoreHandle(), Feature::kFrameRate)};
  return ToResultCode(WriteFloat(camera.CoreHandle(), Feature::kFrameRate, RateFor(seconds, range)),
                      RC_P1_INVALID);
}

unsigned int GetAcquisitionTimings(float* exposure, float* accumulate, float* kinetic)
{
  const TCameraUse camera;
  if (!camera) return RC_NOT_INITIALIZED;

  double exposureSeconds = static_cast<double>(kDefaultExposureSeconds);
  double value = 0.0;
  if (ReadFloat(camera.CoreHandle(), Feature::kExposureTime, value) == VX_SUCCESS) exposureSeconds = value;
  double kineticSeconds = static_cast<double>(kDefaultCycleSeconds);
  if (ReadFloat(camera.CoreHandle(), Feature::kFrameRate, value) == VX_SUCCESS) kineticSeconds = 1.0 / value;
  double accumulateSeconds = static_cast<double>(kDefaultCycleSeconds);
  switch (ReadFloat(camera.CoreHandle(), Feature::kBurstRate, value)) {
  case VX_SUCCESS:
    accumulateSeconds = 1.0 / value;
    break;
  case VX_ERR_NOT_IMPLEMENTED:
    accumulateSeconds = kineticSeconds;
    break;
  default:
    break;
  }

  WriteOutput(exposure, exposureSeconds);
  WriteOutput(accumulate, accumulateSeconds);
  WriteOutput(kinetic, kineticSeconds);
  return RC_SUCCESS;
}

unsigned int GetReadOutTime(float* seconds)
{
  const TCameraUse camera;
  if (!camera) return RC_NOT_INITIALIZED;
  if (!seconds) return RC_P1_INVALID;
  *seconds = 0.0F;
  if (!isImplemented(camera.CoreHandle(), Feature::kReadoutTime)) return RC_NOT_SUPPORTED;

  double value = 0.0;
  const int code = ReadFloat(camera.CoreHandle(), Feature::kReadoutTime, value);
  if (code == VX_SUCCESS) WriteOutput(seconds, value);
  return ToResultCode(code, ResultMap::kReadoutTime);
}

unsigned int GetMaximumExposure(float* seconds)
{
  const TCameraUse camera;
  if (!camera) return RC_NOT_INITIALIZED;
  double maximum = 0.0;
  const int code = ReadFloatMax(camera.CoreHandle(), Feature::kExposureTime, maximum);
  WriteOutput(seconds, maximum);
  return ToResultCode(code, RC_P1_INVALID);
}

} // namespace EntryPoint
