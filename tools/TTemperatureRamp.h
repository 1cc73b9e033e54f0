// SPDX-License-Identifier: MIT
// Moves the target of the cooler step by step.
#pragma once

#include "tools/TCoolingWait.h"

#include <chrono>
#include <functional>
#include <string>

namespace vxtool {

/// What a ramp calls: the camera, and who is asked for an interruption and notified of progress.
struct TRampPorts
{
  std::function<TAnswer<TTemperature>()> ask;
  std::function<unsigned int(int celsius)> setTarget; ///< a result code
  std::function<bool()> isInterrupted;
  std::function<void(const TCoolingProgress&)> onProgress;
};

/// Moves the target in whole degrees from one temperature to another at a constant rate, so that the sensor is not
/// cooled or warmed suddenly. Blocks the caller's thread; asks ten times a second.
class TTemperatureRamp final
{
public:
  static constexpr double kNearCelsius = 1.0; ///< a sensor so near to a temperature has reached it

  TTemperatureRamp(int fromCelsius, int toCelsius, double degreesPerMinute)
      : from_(fromCelsius), to_(toCelsius), perMinute_(degreesPerMinute)
  {
  }
  /// The target so many seconds after the start.
  int TargetAt(double seconds) const;

  /// Sets the first target at once; done when the last one is set, and with @p followsSensor not before the sensor
  /// is there, or is as warm as the cooler lets it become.
  CoolingEnd Run(const TRampPorts& ports, bool followsSensor);
  /// Why it failed, in one line; "" otherwise.
  const std::string& Message() const { return message_; }
  /// As it stood last.
  const TCoolingProgress& Last() const { return last_; }

private:
  using Clock = std::chrono::steady_clock;

  bool SetTarget(const TRampPorts& ports, int celsius);
  bool IsSensorThere();
  CoolingEnd Fail(const std::string& message);

  int from_;
  int to_;
  double perMinute_;
  TCoolingProgress last_;
  double changeCelsius_ = 0.0; // of the sensor when it last changed visibly
  double changeSeconds_ = 0.0;
  bool isTargetSet_ = false;
  std::string message_;
};

} // namespace vxtool
