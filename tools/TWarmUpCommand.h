// SPDX-License-Identifier: MIT
// The command that warms a sensor up.
#pragma once

#include "tools/Messages.h"
#include "tools/Options.h"
#include "tools/TFlatCamera.h"

#include <optional>

namespace vxtool {

/// Raises the cooler's target in a ramp and switches the cooler off when the sensor is warm. Prints to standard error,
/// and with JSON a line to standard output. For one use; one thread.
class TWarmUpCommand final
{
public:
  TWarmUpCommand(const TWarmUpOptions& options, bool isQuiet) : options_(options), isQuiet_(isQuiet) {}

  /// The whole command: opens the camera, and reports at the end.
  ExitCode Run(int camera, bool isJson);
  /// Warms the sensor of the open camera up. Needs a TInterrupt.
  ExitCode WarmOpenCamera(const TFlatCamera& camera);

private:
  /// The last target; nothing, after a message, when the camera does not take it.
  std::optional<int> LastTarget(const TFlatCamera& camera);
  bool SwitchOnAt(const TFlatCamera& camera, int celsius);
  ExitCode Ramp(const TFlatCamera& camera, double sensorCelsius, int lastTarget);
  ExitCode SwitchOff(const TFlatCamera& camera);
  ExitCode FailAt(const char* function, unsigned int code);

  TWarmUpOptions options_;
  bool isQuiet_;
  double seconds_ = 0.0;
};

} // namespace vxtool
