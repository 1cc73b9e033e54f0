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
  /// Sends a trigger when it is time; else waits for up to 100 ms when the last one has brought an image.
  /// @param lastArrival  of an image
  void SendWhenDue(Clock::time_point lastArrival);

private:
  ICamera& camera_;
  double periodSeconds_;
  double imageSeconds_;
  Clock::time_point last_;
};

} // namespace vxtool
