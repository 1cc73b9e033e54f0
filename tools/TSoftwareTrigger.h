// SPDX-License-Identifier: MIT
// Triggers exposures from the program.
#pragma once

#include "tools/ICamera.h"

#include <chrono>

namespace vxtool {

/// When software triggers are due. Borrows the camera; one thread at a time.
class TSoftwareTrigger final
{
public:
  using Clock = std::chrono::steady_clock;

  /// @param periodSeconds  shortest time from trigger to trigger
  /// @param imageSeconds  about how long one exposure takes until it is delivered
  TSoftwareTrigger(ICamera& camera, double periodSeconds, double imageSeconds)
      : camera_(camera), periodSeconds_(periodSeconds), imageSeconds_(imageSeconds)
  {
  }
  /// Sends a trigger when it is due, which it waits for up to 1 ms.
  /// @param lastArrival  of an image
  /// @return when the next trigger is due, if no image comes before
  Clock::time_point SendWhenDue(Clock::time_point lastArrival);

private:
  Clock::time_point NextDue(Clock::time_point lastArrival) const;

  ICamera& camera_;
  double periodSeconds_;
  double imageSeconds_;
  Clock::time_point last_; // trigger; the clock's zero before the first one
};

} // namespace vxtool
