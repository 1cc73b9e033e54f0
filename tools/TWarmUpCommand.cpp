// SPDX-License-Identifier: MIT
// From a cold sensor to a cooler that is off.
#include "tools/TWarmUpCommand.h"

#include "tools/CameraDescription.h"
#include "tools/Json.h"
#include "tools/TFlatCamera.h"
#include "tools/TInterrupt.h"
#include "tools/TProgressLine.h"
#include "tools/TTemperatureRamp.h"
#include "vxmcd.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <unistd.h>

namespace vxtool {

namespace {

constexpr int kRoomCelsius = 20;

std::optional<double> SensorCelsius()
{
  const std::optional<TTemperature> temperature = AskTemperature().value;
  return temperature ? std::optional<double>(temperature->celsius) : std::nullopt;
}

std::string OutcomeText(ExitCode code)
{
  return code == ExitCode::Success ? "complete" : code == ExitCode::Interrupted ? "interrupted" : "failed";
}

} // namespace

ExitCode TWarmUpCommand::FailAt(const char* function, unsigned int code)
{
  return Fail(ExitCode::CameraError, "warm-up: " + ResultText(function, code));
}

ExitCode TWarmUpCommand::Run(int camera, bool isJson)
{
  TFlatCamera open;
  if (!open.Open(camera)) return Fail(ExitCode::NoCamera, open.Error());
  const std::optional<double> first = SensorCelsius();
  const ExitCode code = WarmOpenCamera();
  const std::optional<double> last = SensorCelsius();
  int isOn = 0;
  const bool isKnown = IsCoolerOn(&isOn) == RC_SUCCESS;
  if (!isJson) return code;
  const Json json = {{"outcome", OutcomeText(code)},
                     {"seconds", std::round(seconds_ * 1.0e6) / 1.0e6},
                     {"celsius_start", JsonOfSingle(first)},
                     {"celsius_end", JsonOfSingle(last)},
                     {"cooler_on", isKnown ? Json(isOn == 1) : Json(nullptr)}};
  if (!Print(JsonLine(json))) return ExitCode::OutputError;
  return code;
}

ExitCode TWarmUpCommand::WarmOpenCamera()
{
  const TInterrupt interrupt;
  const TAnswer<TTemperature> sensor = AskTemperature();
  if (!sensor.value) return FailAt(sensor.function, sensor.code);
  const std::optional<int> last = LastTarget();
  if (!last) return ExitCode::CameraError;
  const double celsius = static_cast<double>(sensor.value->celsius);
  if (celsius >= *last - TTemperatureRamp::kNearCelsius) return SwitchOff();
  return Ramp(celsius, *last);
}

std::optional<int> TWarmUpCommand::LastTarget()
{
  int lowest = 0;
  int highest = 0;
  if (const unsigned int code = GetTemperatureRange(&lowest, &highest); code != RC_SUCCESS) {
    FailAt("GetTemperatureRange", code);
    return std::nullopt;
  }
  if (!options_.toCelsius) return std::clamp(kRoomCelsius, lowest, highest);
  if (*options_.toCelsius >= lowest && *options_.toCelsius <= highest) return options_.toCelsius;
  Say("--to: " + RefusedText(std::to_string(*options_.toCelsius), "this camera takes " + std::to_string(lowest) +
                                                                      " to " + std::to_string(highest) + " C"));
  return std::nullopt;
}

// The cooler may be off, and the sensor on its way: then the cooler slows it down.
bool TWarmUpCommand::SwitchOnAt(int celsius)
{
  if (const unsigned int code = SetTemperature(celsius); code != RC_SUCCESS) {
    FailAt("SetTemperature", code);
    return false;
  }
  CoolerON();
  return true;
}

ExitCode TWarmUpCommand::Ramp(double sensorCelsius, int lastTarget)
{
  const int first = std::min(static_cast<int>(std::ceil(sensorCelsius)), lastTarget);
  if (!SwitchOnAt(first)) return ExitCode::CameraError;
  TProgressLine line(stderr, isatty(STDERR_FILENO) == 1);
  TTemperatureRamp ramp(first, lastTarget, options_.degreesPerMinute);
  const CoolingEnd end = ramp.Run({.ask = AskTemperature,
                                   .setTarget = SetTemperature,
                                   .isInterrupted = TInterrupt::Happened,
                                   .onProgress =
                                       [&](const TCoolingProgress& progress) {
                                         if (!isQuiet_) line.ShowText(CoolingText(progress), progress.seconds);
                                       }},
                                  true);
  line.Finish();
  seconds_ = ramp.Last().seconds;
  if (end == CoolingEnd::Failed) return Fail(ExitCode::CameraError, "warm-up: " + ramp.Message());
  if (end == CoolingEnd::Interrupted)
    return Fail(ExitCode::Interrupted, "interrupted while warming up: the cooler stays on with the target " +
                                           std::to_string(ramp.Last().targetCelsius) +
                                           " C; vxmcd warm-up goes on from there");
  return SwitchOff();
}

ExitCode TWarmUpCommand::SwitchOff()
{
  CoolerOFF();
  int isOn = 0; // CoolerOFF() succeeds even if the camera refuses
  const unsigned int code = IsCoolerOn(&isOn);
  if (code != RC_SUCCESS) return FailAt("IsCoolerOn", code);
  if (isOn != 0) return Fail(ExitCode::CameraError, "warm-up: the cooler does not switch off");
  char text[80];
  std::snprintf(text, sizeof text, "the sensor is at %.1f C, the cooler is off", SensorCelsius().value_or(0.0));
  if (!isQuiet_) Say(text);
  return ExitCode::Success;
}

} // namespace vxtool
