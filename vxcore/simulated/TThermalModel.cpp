// SPDX-License-Identifier: MIT
// The sensor's temperature under its cooler and its fan.
#include "vxcore/simulated/TThermalModel.h"

#include <algorithm>
#include <cmath>

namespace vxsim {

namespace {

// Temperatures are computed on a fixed grid of times, so that they do not depend on when they are read.
constexpr double kStepSeconds = 0.1;
constexpr double kRegulation = 4.0; ///< how many times its own return to rest the regulated sensor speeds up
constexpr double kBandCelsius = 0.5;
constexpr double kNearCelsius = 3.0;
constexpr int64_t kStepsUntilStable = 100;
constexpr double kRestCelsius = 1e-6;

} // namespace

const TThermalModel::TFan TThermalModel::kFanOn{3.0, 1.0, 1.0};
const TThermalModel::TFan TThermalModel::kFanLow{5.0, 0.8, 1.25};
const TThermalModel::TFan TThermalModel::kFanOff{10.0, 0.4, 2.0};

TThermalModel::TThermalModel(const TModelThermal& model, double ambientCelsius, double timeScale)
    : model_(model),
      ambientCelsius_(ambientCelsius),
      timeScale_(timeScale),
      fan_(kFanOn),
      targetCelsius_(model.targetInitialCelsius),
      sensorCelsius_(WarmCelsius())
{
}

void TThermalModel::AdvanceTo(int64_t nowNs)
{
  const double passedSeconds = static_cast<double>(nowNs - originNs_) * 1e-9 * timeScale_;
  const auto due = static_cast<int64_t>(passedSeconds / kStepSeconds);
  while (steps_ < due && !IsAtRest()) {
    Step();
    ++steps_;
  }
  steps_ = std::max(steps_, due);
}

void TThermalModel::SetCooling(bool on)
{
  if (on == cooling_) return;
  cooling_ = on;
  wasStable_ = false;
  stepsInBand_ = 0;
  UpdateStatus();
}

void TThermalModel::SetTargetCelsius(double celsius)
{
  if (celsius == targetCelsius_) return;
  targetCelsius_ = celsius;
  wasStable_ = false;
  stepsInBand_ = 0;
  UpdateStatus();
}

void TThermalModel::SetFan(EFan speed)
{
  fan_ = speed == EFan::Off ? kFanOff : speed == EFan::Low ? kFanLow : kFanOn;
}

double TThermalModel::ReadingCelsius() const
{
  return std::round(sensorCelsius_ / model_.readingStepCelsius) * model_.readingStepCelsius;
}

/// The cooler's heat goes through the heat sink.
double TThermalModel::HeatSinkCelsius() const
{
  return ambientCelsius_ + fan_.heatCelsius * (1.0 + Power());
}

/// Share of the cooler's full power: what keeps the target, more when the sensor is too warm, less when too cold.
double TThermalModel::Power() const
{
  if (!cooling_) return 0.0;
  const double depth = model_.coolingDepthCelsius * fan_.depthShare;
  const double wanted = WarmCelsius() - targetCelsius_ + kRegulation * (sensorCelsius_ - targetCelsius_);
  return std::clamp(wanted / depth, 0.0, 1.0);
}

void TThermalModel::Step()
{
  const double rest = WarmCelsius() - Power() * model_.coolingDepthCelsius * fan_.depthShare;
  const double share = kStepSeconds / (model_.timeConstantSeconds * fan_.slowness);
  sensorCelsius_ += (rest - sensorCelsius_) * share;
  const bool inBand = std::abs(sensorCelsius_ - targetCelsius_) <= kBandCelsius;
  stepsInBand_ = inBand ? std::min(stepsInBand_ + 1, kStepsUntilStable) : 0;
  UpdateStatus();
}

void TThermalModel::UpdateStatus()
{
  if (!cooling_) {
    status_ = ETemperatureStatus::Off;
    return;
  }
  const double distance = std::abs(sensorCelsius_ - targetCelsius_);
  if (stepsInBand_ >= kStepsUntilStable) {
    wasStable_ = true;
    status_ = ETemperatureStatus::Stabilised;
  } else if (wasStable_)
    status_ = ETemperatureStatus::Drift;
  else
    status_ = distance <= kNearCelsius ? ETemperatureStatus::NotStabilised : ETemperatureStatus::NotReached;
}

/// Nothing changes until a setting changes.
bool TThermalModel::IsAtRest() const
{
  const double rest = WarmCelsius() - Power() * model_.coolingDepthCelsius * fan_.depthShare;
  if (std::abs(rest - sensorCelsius_) > kRestCelsius) return false;
  const bool inBand = std::abs(sensorCelsius_ - targetCelsius_) <= kBandCelsius;
  return !cooling_ || !inBand || stepsInBand_ >= kStepsUntilStable;
}

} // namespace vxsim
