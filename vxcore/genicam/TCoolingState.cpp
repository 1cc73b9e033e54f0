// SPDX-License-Identifier: MIT
// "TemperatureStatus" of a camera whose cooler a map file names.
#include "vxcore/genicam/TCoolingState.h"

#include <cmath>

namespace vxgenicam {

TCoolingState::EStatus TCoolingState::Update(bool isOn, double celsius, double targetCelsius)
{
  if (!isOn || std::fabs(celsius - targetCelsius) > kNearCelsius) {
    isNear_ = false;
    return isOn ? NotReached : CoolerOff;
  }
  const TClock::time_point now = TClock::now();
  if (!isNear_) nearSince_ = now;
  isNear_ = true;
  return now - nearSince_ >= kStableAfter ? Stabilised : NotStabilised;
}

} // namespace vxgenicam
