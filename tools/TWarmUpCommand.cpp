// SPDX-License-Identifier: MIT
// From a cold sensor to a cooler that is off.
#include "tools/TWarmUpCommand.h"

#include "tools/CameraDescription.h"
#include "tools/Json.h"
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

std::optional<double> SensorCelsius(const TFlatCamera& camera)
{
  const std::optional<TTemperature> temperature = camera.Ask(AskTemperature).value;
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
  const TInterrupt interrupt;
  const std::optional<double> first = SensorCelsius(open);
  const ExitCode code = WarmOpenCamera(open);
  const std::optional<double> last = SensorCelsius(open);
  int isOn = 0;
  const bool isKnown = open.Do([&] { return IsCoolerOn(&isOn); }) == RC_SUCCESS;
  if (!isJson) return code;
  const Json json = {{"outcome", OutcomeText(code)},
                     {"seconds", std::round(seconds_ * 1.0e6) / 1.0e6},
                     {"celsius_start", JsonOfSingle(first)},
                     {"celsius_end", JsonOfSingle(last)},
                     {"cooler_on", isKnown ? Json(isOn == 1) : Json(nullptr)}};
  if (!Print(JsonLine(json))) return ExitCode::OutputError;
  return code;
}

ExitCode TWarmUpCommand::WarmOpenCamera(const TFlatCamera& camera)
{
  const TAnswer<TTemperature> sensor = camera.Ask(AskTemperature);
  if (!sensor.value) return FailAt(sensor.function, sensor.code);
  const std::optional<int> last = LastTarget(camera);
  if (!last) return ExitCode::CameraError;
  const double celsius = static_cast<double>(sensor.value->celsius);
  if (celsius >= *last - TTemperatureRamp::kNearCelsius) return SwitchOff(camera);
  return Ramp(camera, celsius, *last);
}

std::optional<int> TWarmUpCommand::LastTarget(const TFlatCamera& camera)
{
  int lowest = 0;
  int highest = 0;
  const unsigned int code = camera.Do([&] { return GetTemperatureRange(&lowest, &highest); });
  if (code != RC_SUCCESS) {
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
bool TWarmUpCommand::SwitchOnAt(const TFlatCamera& camera, int celsius)
{
  const unsigned int code = camera.Do([&] { return SetTemperature(celsius); });
  if (code != RC_SUCCESS) {
    FailAt("SetTemperature", code);
    return false;
  }
  camera.Do(CoolerON);
  return true;
}

ExitCode TWarmUpCommand::Ramp(const TFlatCamera& camera, double sensorCelsius, int lastTarget)
{
  const int first = std::min(static_cast<int>(std::ceil(sensorCelsius)), lastTarget);
  if (!SwitchOnAt(camera, first)) return ExitCode::CameraError;
  TProgressLine line(stderr, isatty(STDERR_FILENO) == 1);
  TTemperatureRamp ramp(first, lastTarget, options_.degreesPerMinute);
  const auto setTarget = [&](int celsius) { return camera.Do([&] { return SetTemperature(celsius); }); };
  const CoolingEnd end = ramp.Run({.ask = [&] { return camera.Ask(AskTemperature); },
                                   .setTarget = setTarget,
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
  return SwitchOff(camera);
}

ExitCode TWarmUpCommand::SwitchOff(const TFlatCamera& camera)
{
  camera.Do(CoolerOFF);
  int isOn = 0; // CoolerOFF() succeeds even if the camera refuses
  const unsigned int code = camera.Do([&] { return IsCoolerOn(&isOn); });
  if (code != RC_SUCCESS) return FailAt("IsCoolerOn", code);
  if (isOn != 0) return Fail(ExitCode::CameraError, "warm-up: the cooler does not switch off");
  char text[80];
  std::snprintf(text, sizeof text, "the sensor is at %.1f C, the cooler is off",
                SensorCelsius(camera).value_or(0.0));
  if (!isQuiet_) Say(text);
  return ExitCode::Success;
}

} // namespace vxtool
