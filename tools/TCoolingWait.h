// SPDX-License-Identifier: MIT
// Waits until the sensor's temperature is stable.
#pragma once

#include "tools/CameraDescription.h"

#include <functional>
#include <string>

namespace vxtool {

enum class CoolingEnd
{
  Done,
  Interrupted,
  Failed,
};

/// How far the cooling is, for the progress line.
struct TCoolingProgress
{
  double seconds = 0.0;
  double celsius = 0.0;
  int targetCelsius = 0;
  std::optional<int> finalCelsius; ///< where a ramp takes the target
  unsigned int state = RC_SUCCESS;
};

/// Asks for the temperature ten times a second until the camera calls it stable, the time is out, the user
/// interrupts or the question fails. Borrows the callbacks; blocks the caller's thread.
class TCoolingWait final
{
public:
  /// @param limitSeconds  0: no limit
  TCoolingWait(int targetCelsius, double limitSeconds) : targetCelsius_(targetCelsius), limitSeconds_(limitSeconds)
  {
  }
  CoolingEnd Run(const std::function<TAnswer<TTemperature>()>& ask, const std::function<bool()>& isInterrupted,
                 const std::function<void(const TCoolingProgress&)>& onProgress);
  /// Why it failed, in one line; "" otherwise.
  const std::string& Message() const { return message_; }
  /// As it stood last.
  const TCoolingProgress& Last() const { return last_; }

private:
  CoolingEnd Fail(const std::string& message);

  int targetCelsius_;
  double limitSeconds_;
  TCoolingProgress last_;
  std::string message_;
};

/// The text of the progress line.
std::string CoolingText(const TCoolingProgress& progress);

} // namespace vxtool
