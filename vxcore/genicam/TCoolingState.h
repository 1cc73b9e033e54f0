// SPDX-License-Identifier: MIT
// "TemperatureStatus" of a camera whose cooler a map file names.
#pragma once

#include <chrono>

namespace vxgenicam {

/// How near the sensor is to the cooler's target, and since when. Owned by its feature, used under the device's lock.
class TCoolingState final
{
public:
  enum EStatus : int ///< indices of "TemperatureStatus"
  {
    CoolerOff,
    Stabilised,
    NotReached,
    Drift, ///< of other cameras
    NotStabilised
  };

  /// The status now. Stabilised after 30 s within 0.5 degrees of the target, by the times of the calls.
  EStatus Update(bool isOn, double celsius, double targetCelsius);

private:
  using TClock = std::chrono::steady_clock;

  bool isNear_ = false;
  TClock::time_point nearSince_;
};

} // namespace vxgenicam
