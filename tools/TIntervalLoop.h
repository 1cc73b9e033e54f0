// SPDX-License-Identifier: MIT
// Takes single images at times of a schedule.
#pragma once

#include "tools/Run.h"
#include "tools/TRunLoop.h"

#include <chrono>
#include <functional>
#include <memory>
#include <string>

namespace vxtool {

/// A time-lapse, on the caller's thread. Image k is a run of one image that starts k - 1 intervals after the first, by
/// a clock that nobody sets. One that can only start later is late; one that cannot start before the next one's time is
/// missing, so that a delay neither shifts the schedule nor ends in a burst of images. An image that the camera loses is
/// missing too; a second one in a row ends the run. Memory does not depend on the number of images. Borrows camera,
/// writer and callbacks until Run() returns.
class TIntervalLoop final
{
public:
  /// @param writer         takes each image when it is there, with its number and the host's time; may be null
  /// @param settings       of the whole schedule, with an interval; wantedImages 0: until interrupted
  /// @param isInterrupted  asked at least every 100 ms
  /// @param onNote         called with a line for each image that is late or missing
  TIntervalLoop(ICamera& camera, IImageWriter* writer, const TRunSettings& settings,
                std::function<bool()> isInterrupted, std::function<void(const TProgress&)> onProgress,
                std::function<void(const std::string&)> onNote);

  RunEnd Run();

  const TFrameStatistics& Statistics() const { return statistics_; }
  /// The newest image; empty when there was none.
  TPixelBytes LastImage() const { return newest_ ? newest_->LastImage() : TPixelBytes{}; }
  TImageLabel LastLabel() const { return newest_ ? newest_->LastLabel() : TImageLabel{}; }
  /// What ended the run, in one line; "" after a complete one.
  const std::string& Message() const { return message_; }
  double Seconds() const { return seconds_; }

private:
  using Clock = std::chrono::steady_clock;

  RunEnd TakeImages();
  bool IsWanted(long image) const { return settings_.wantedImages == 0 || image <= settings_.wantedImages; }
  Clock::time_point DueTime(long image) const;
  /// Waits for the time of the image; false when interrupted.
  bool WaitFor(long image);
  /// The image to take now, after those whose time has passed. Notes them, and whether it is late.
  long SkipMissed(long image);
  RunEnd Take(long image);
  void Report(TProgress progress);
  double SecondsSinceStart() const { return std::chrono::duration<double>(Clock::now() - start_).count(); }

  ICamera& camera_;
  IImageWriter* writer_;
  TRunSettings settings_;
  std::function<bool()> isInterrupted_;
  std::function<void(const TProgress&)> onProgress_;
  std::function<void(const std::string&)> onNote_;
  TFrameStatistics statistics_{false};
  std::unique_ptr<TRunLoop> newest_; // the run of the newest image
  Clock::time_point start_;
  int lostInARow_ = 0;
  std::string message_;
  double seconds_ = 0.0;
};

} // namespace vxtool
