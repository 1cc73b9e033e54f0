// SPDX-License-Identifier: MIT
// Runs one acquisition: starts it, triggers, waits, has its images fetched or counted, and knows when to stop.
#pragma once

#include "tools/ICamera.h"
#include "tools/Run.h"
#include "tools/TImageFetcher.h"
#include "tools/TSoftwareTrigger.h"

#include <chrono>
#include <functional>
#include <optional>
#include <string>

namespace vxtool {

/// One run from start to end, on the caller's thread. Its images are fetched, or, in a recorded run, only counted: the
/// ring's buffers are used again as soon as the library has written them. Borrows camera, writer and callbacks until
/// Run() returns.
class TRunLoop final
{
public:
  /// @param writer         takes the images that are fetched; may be null
  /// @param isInterrupted  asked at least every 100 ms
  /// @param onProgress     called after each turn of the loop
  TRunLoop(ICamera& camera, IImageWriter* writer, const TRunSettings& settings,
           std::function<bool()> isInterrupted, std::function<void(const TProgress&)> onProgress);
  TRunLoop(const TRunLoop&) = delete;
  TRunLoop& operator=(const TRunLoop&) = delete;

  /// OutputFailed when the writer, or in a recorded run the library, could not write. What the library has on its way
  /// to the disk may get there after it returns.
  RunEnd Run();
  /// Completes the statistics of a recorded run. @param written  images on disk, by the directory
  void FinishRecorded(long written);

  const TFrameStatistics& Statistics() const { return statistics_; }
  /// The newest intact image; empty when there was none.
  TPixelBytes LastImage() const { return fetcher_ ? fetcher_->LastImage() : TPixelBytes{}; }
  TImageLabel LastLabel() const { return fetcher_ ? fetcher_->LastLabel() : TImageLabel{}; }
  /// What ended the run, in one line; "" after a complete one.
  const std::string& Message() const { return message_; }
  /// The library's status when it ended the run before its time; 0 otherwise.
  int EndStatus() const { return endStatus_; }
  double Seconds() const { return seconds_; }

private:
  using Clock = std::chrono::steady_clock;

  bool Start();
  RunEnd RunStarted();
  /// Sends a trigger when one is due and waits up to 100 ms for an image. The status is read after that, and before
  /// anyone looks for images: when it says that the run is over, no image can follow.
  bool WaitForImage(int& status);
  /// Fetches or counts what is there.
  bool TakeImages(Clock::time_point deadline);
  void CountDelivered();
  bool IsDone() const;
  bool IsTooLate();
  /// How a run has ended that went as far as this status.
  RunEnd EndOf(int status);
  bool IsExplainedByLoss() const;
  /// Stops a run that still goes on; a result code.
  unsigned int Stop();
  void ReadTimestamps(long last);
  void Report();
  bool Fail(const std::string& message, RunEnd end = RunEnd::CameraFailed);
  double SecondsSinceStart() const { return std::chrono::duration<double>(Clock::now() - start_).count(); }

  ICamera& camera_;
  TRunSettings settings_;
  std::function<bool()> isInterrupted_;
  std::function<void(const TProgress&)> onProgress_;
  TFrameStatistics statistics_;
  std::optional<TImageFetcher> fetcher_; // not in a recorded run
  TSoftwareTrigger trigger_;
  Clock::time_point start_;
  Clock::time_point lastArrival_;
  std::string message_;
  RunEnd end_ = RunEnd::Complete; // of a failure
  int endStatus_ = 0;             // of the library, when it ended the run
  long delivered_ = 0;
  double seconds_ = 0.0;
};

} // namespace vxtool
