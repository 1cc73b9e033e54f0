// SPDX-License-Identifier: MIT
// The sensor's temperature under its cooler and its fan.
#pragma once

#include <cstdint>

namespace vxsim {

/// The cooling of a camera model. Depth and time constant are with the fan at "On".
struct TModelThermal
{
  double targetMinimumCelsius;
  double targetMaximumCelsius;
  double targetInitialCelsius;
  double coolingDepthCelsius; ///< what the cooler takes off at full power
  double timeConstantSeconds; ///< of the sensor's warming and cooling
  double readingStepCelsius;  ///< resolution of "SensorTemperature"
};

enum class EFan
{
  On,
  Low,
  Off
};

/// The order of "TemperatureStatus".
enum class ETemperatureStatus
{
  Off,           ///< the cooler is off
  Stabilised,    ///< at the target for long enough
  NotReached,    ///< not yet at the target, or unable to reach it
  Drift,         ///< was stable and has left the target without a change of the setting
  NotStabilised, ///< near the target, but not for long enough
};

/// Temperature of sensor and heat sink, and the regulation of the cooler. A camera that is opened has been
/// standing with its cooler off. Its time is that of AdvanceTo(); the same times and settings give the
/// same temperatures, however often they are read. Owned by TCameraState, guarded by the device's lock. Settings take
/// effect from the time of the last AdvanceTo().
class TThermalModel final
{
public:
  /// @p timeScale: seconds that pass for the temperature in one second of the camera's clock
  TThermalModel(const TModelThermal& model, double ambientCelsius, double timeScale);

  /// Begins at @p nowNs of the camera's clock.
  void Begin(int64_t nowNs) { originNs_ = nowNs; }
  /// Moves on to a time; earlier ones change nothing.
  void AdvanceTo(int64_t nowNs);
  /// Adds time that the camera's clock does not see.
  void Skip(int64_t nanoseconds) { originNs_ -= nanoseconds; }

  void SetCooling(bool on);
  bool IsCooling() const { return cooling_; }
  void SetTargetCelsius(double celsius);
  double TargetCelsius() const { return targetCelsius_; }
  void SetFan(EFan speed);

  double SensorCelsius() const { return sensorCelsius_; }
  /// What the camera's own thermometer shows of it.
  double ReadingCelsius() const;
  double HeatSinkCelsius() const;
  ETemperatureStatus Status() const { return status_; }

private:
  struct TFan
  {
    double heatCelsius; ///< how much warmer than the room the heat sink stays
    double depthShare;  ///< of the cooler's depth
    double slowness;    ///< multiplies the time constant
  };

  double Power() const;
  double WarmCelsius() const { return ambientCelsius_ + fan_.heatCelsius; }
  void Step();
  void UpdateStatus();
  bool IsAtRest() const;

  static const TFan kFanOn;
  static const TFan kFanLow;
  static const TFan kFanOff;

  const TModelThermal& model_;
  const double ambientCelsius_;
  const double timeScale_;
  TFan fan_;
  bool cooling_ = false;
  double targetCelsius_;
  double sensorCelsius_;
  ETemperatureStatus status_ = ETemperatureStatus::Off;
  bool wasStable_ = false; ///< since the target was set
  int64_t stepsInBand_ = 0;
  int64_t originNs_ = 0;
  int64_t steps_ = 0; ///< done since the origin
};

} // namespace vxsim
