// SPDX-License-Identifier: MIT
// "TemperatureStatus" of a camera whose cooler a map file names.
#pragma once

#include <chrono>
#include <string>
#include <vector>

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
  static std::vector<std::wstring> Texts()
  {
    return {L"Cooler Off", L"Stabilised", L"Not Reached", L"Drift", L"Not Stabilised"};
  }

  static constexpr double kNearCelsius = 0.5;
  static constexpr std::chrono::seconds kStableAfter{30};

  /// The status now. Stabilised when all calls of the last kStableAfter found the sensor within kNearCelsius of the target.
  EStatus Update(bool isOn, double celsius, double targetCelsius);

private:
  using TClock = std::chrono::steady_clock;

  bool isNear_ = false;
  TClock::time_point nearSince_;
};

} // namespace vxgenicam
