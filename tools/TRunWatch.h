// SPDX-License-Identifier: MIT
// What every loop over a run does with the camera and the clock.
#pragma once

#include "tools/ICamera.h"
#include "tools/RunProgress.h"
#include "tools/TRunAccount.h"
#include "tools/TSoftwareTrigger.h"

#include <chrono>
#include <string>

namespace vxtool {

/// Starts a run, triggers it, waits for it, stops it and keeps its time. Borrows the camera; one thread at a time.
/// Operations answer false on failure, and Message() then says why, in one line.
class TRunWatch final
{
public:
  using Clock = std::chrono::steady_clock;

  TRunWatch(ICamera& camera, const TLoopSettings& settings);

  /// Time runs from here.
  bool Start();
  /// Sends a trigger when one is due and waits up to 100 ms for an image. The status is read after that, and
  /// before anyone looks for images: when it says that the run is over, no image can follow.
  bool Turn(int& status);
  /// An image has come: there is as much time again for the next one.
  void Arrived() { lastArrival_ = Clock::now(); }
  /// Whether there was no image for longer than the settings allow; Message() then says so.
  bool IsTooLate();
  /// Stops a run that still goes on.
  bool Stop();
  /// Enters the timestamps up to that of image @p last, as far as they are there.
  void ReadTimestamps(TRunAccount& account, long last);

  double Seconds() const { return std::chrono::duration<double>(Clock::now() - start_).count(); }
  const std::string& Message() const { return message_; }

private:
  bool Fail(const char* function, unsigned int code);

  ICamera& camera_;
  TLoopSettings settings_;
  TSoftwareTrigger trigger_;
  Clock::time_point start_;
  Clock::time_point lastArrival_;
  std::string message_;
};

} // namespace vxtool
