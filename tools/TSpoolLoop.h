// SPDX-License-Identifier: MIT
// Runs one acquisition whose frames the library writes to disk: starts it, watches it, knows when to stop.
#pragma once

#include "tools/ICamera.h"
#include "tools/RunProgress.h"
#include "tools/TRunAccount.h"
#include "tools/TRunWatch.h"

#include <functional>
#include <string>

namespace vxtool {

/// One recorded run from start to end, on the caller's thread. Takes no image: the buffers of the ring are used
/// again as soon as the library has written them. Borrows camera and callbacks until Run() returns.
class TSpoolLoop final
{
public:
  /// @param isInterrupted  asked at least every 100 ms
  /// @param onProgress     told after each turn of the loop
  TSpoolLoop(ICamera& camera, const TLoopSettings& settings, std::function<bool()> isInterrupted,
             std::function<void(const TProgress&)> onProgress);

  /// OutputFailed when the library could not write. What is on its way to the disk may get there after it returns.
  RunEnd Run();
  /// Closes the account. @param written  images on disk, by the directory
  void Finish(long written);

  const TRunAccount& Account() const { return account_; }
  /// What ended the run, in one line; "" after a complete one.
  const std::string& Message() const { return message_; }
  double Seconds() const { return seconds_; }

private:
  RunEnd RunStarted();
  /// How a run has ended that went as far as this status.
  RunEnd EndOf(int status);
  RunEnd Fail(const std::string& message);
  void Look();
  void Report();

  ICamera& camera_;
  TLoopSettings settings_;
  std::function<bool()> isInterrupted_;
  std::function<void(const TProgress&)> onProgress_;
  TRunAccount account_;
  TRunWatch watch_;
  std::string message_;
  long delivered_ = 0;
  double seconds_ = 0.0;
};

} // namespace vxtool
