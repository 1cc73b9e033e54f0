// SPDX-License-Identifier: MIT
// Cooling.
#include "tools/check/CameraRuns.h"
#include "tools/check/Checks.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <thread>

namespace vxtool {

namespace {

struct TTargets
{
  int low = 0;
  int high = 0;
};

TTargets Targets(TCheckContext& check)
{
  TTargets targets;
  if (CHECK_CALL(check, GetTemperatureRange, &targets.low, &targets.high) == RC_NOT_SUPPORTED)
    TCheckContext::Skip("the camera's temperature cannot be set");
  return targets;
}

double Target(TCheckContext& check)
{
  float sensor = 0.0F;
  float target = 0.0F;
  float none = 0.0F;
  check.Need("GetTemperatureStatus", CHECK_CALL(check, GetTemperatureStatus, &sensor, &target, &none, &none));
  return static_cast<double>(target);
}

} // namespace

void RefusesTemperatures(TCheckContext& check)
{
  constexpr int kBeyond = 5;
  const TTargets targets = Targets(check);
  const double before = Target(check);
  for (const int wrong : {targets.low - kBeyond, targets.high + kBeyond})
    TCheckContext::ExpectCode("SetTemperature(" + std::to_string(wrong) + ")", RC_P1_INVALID,
                              CHECK_CALL(check, SetTemperature, wrong));
  TCheckContext::ExpectEqual("the target after refusals", before, Target(check));
}

void HasTemperature(TCheckContext& check)
{
  constexpr double kColdest = -150.0;
  constexpr double kHottest = 100.0;
  float celsius = NAN;
  const unsigned int code = CHECK_CALL(check, GetTemperatureF, &celsius);
  if (code == RC_NOT_SUPPORTED) TCheckContext::Skip("the camera has no thermometer");
  const auto temperature = static_cast<double>(celsius);
  TCheckContext::Expect(temperature >= kColdest && temperature <= kHottest, "the temperature of the sensor",
                        TCheckContext::Shown(kColdest) + " to " + TCheckContext::Shown(kHottest) + " C",
                        TCheckContext::Shown(temperature) + " C");
}

void CoolsDown(TCheckContext& check)
{
  constexpr int kStep = 10; // degrees
  constexpr int kMinStep = 5;
  constexpr double kTolerance = 1.5;
  constexpr std::chrono::minutes kMaxTime(10);
  const TTargets targets = Targets(check);
  int isOn = 0;
  if (CHECK_CALL(check, IsCoolerOn, &isOn) == RC_NOT_SUPPORTED) TCheckContext::Skip("the camera has no cooler");
  CHECK_CALL(check, CoolerOFF);
  float celsius = 0.0F;
  TCheckContext::ExpectCode("the state with the cooler off", RC_TEMP_OFF,
                            CHECK_CALL(check, GetTemperatureF, &celsius));
  const int target = std::clamp(static_cast<int>(celsius) - kStep, targets.low, targets.high);
  if (celsius < static_cast<float>(target + kMinStep))
    TCheckContext::Skip("the sensor is almost as cold as its lowest target: it could not be seen to cool");
  TCheckContext::ExpectCode("SetTemperature", RC_SUCCESS, CHECK_CALL(check, SetTemperature, target));
  CHECK_CALL(check, CoolerON);
  CHECK_CALL(check, IsCoolerOn, &isOn);
  TCheckContext::ExpectEqual("whether the cooler is on", 1, isOn);
  TCheckContext::ExpectCode("the state right after the cooler was switched on", RC_TEMP_NOT_REACHED,
                            CHECK_CALL(check, GetTemperatureF, &celsius));
  const auto end = std::chrono::steady_clock::now() + kMaxTime;
  unsigned int state = RC_TEMP_NOT_REACHED;
  while (state != RC_TEMP_STABILIZED && std::chrono::steady_clock::now() < end) {
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    state = CHECK_CALL(check, GetTemperatureF, &celsius);
    TCheckContext::Expect(state != RC_TEMP_OFF, "the state while the sensor is cooled", "not off",
                          TCheckContext::CodeText(state));
  }
  TCheckContext::ExpectCode("the state after 10 minutes at most", RC_TEMP_STABILIZED, state);
  TCheckContext::ExpectWithin("the temperature of a stable sensor", target, kTolerance,
                              static_cast<double>(celsius));
}

} // namespace vxtool
