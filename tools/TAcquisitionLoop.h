// SPDX-License-Identifier: MIT
// Runs one acquisition: waits, copies every image out, hands it on, counts, and knows when to stop.
#pragma once

#include "tools/ICamera.h"
#include "tools/IImageWriter.h"
#include "tools/TRunAccount.h"
#include "tools/TSoftwareTrigger.h"

#include <chrono>
#include <functional>
#include <string>
#include <vector>

namespace vxtool {

/// How a run is to go.
struct TLoopSettings
{
  TImageShape shape;
  long wantedImages = 1;  ///< images to fetch; 0: until interrupted
  bool isEndless = false; ///< the camera runs until aborted and its ring overwrites the oldest image
  bool isSoftwareTriggered = false;
  bool isPaced = true;          ///< the camera makes frames at an even pace
  double noImageSeconds = 0.0;  ///< give up after this long without an image; 0: never
  double triggerSeconds = 0.0;  ///< software trigger: shortest time from trigger to trigger
  double imageSeconds = 0.0;    ///< about how long one exposure takes until it is delivered
  long ringBytes = 300'000'000; ///< memory of the ring of frame buffers
};

/// How a run ended.
enum class RunEnd
{
  Complete,
  Interrupted,
  CameraFailed,
  OutputFailed,
};

/// Where a run stands, for whoever shows it.
struct TProgress
{
  double seconds = 0.0;
  long delivered = 0;
  long fetched = 0;
  long wanted = 0; ///< 0: no limit
  long lost = 0;
  std::optional<double> ringFill; ///< part of the ring that holds images not fetched yet, 0 to 1
  std::size_t imageBytes = 0;
};

/// One acquisition from start to end, on the caller's thread. Borrows camera, writer and callbacks until Run()
/// returns. Images are asked for by number, so that a skipped one is known, and looked at again after copying: an
/// image whose buffer may have been filled anew meanwhile counts as overwritten and is not written.
class TAcquisitionLoop final
{
public:
  /// @param writer         takes the images; may be null
  /// @param isInterrupted  asked at least every 100 ms
  /// @param onProgress     told after each turn of the loop
  TAcquisitionLoop(ICamera& camera, IImageWriter* writer, const TLoopSettings& settings,
                   std::function<bool()> isInterrupted, std::function<void(const TProgress&)> onProgress);

  RunEnd Run();

  const TRunAccount& Account() const { return account_; }
  TRunAccount& Account() { return account_; }
  /// The newest intact image; empty when there was none.
  TPixelBytes LastImage() const { return lastImage_; }
  const TImageLabel& LastLabel() const { return lastLabel_; }
  /// What ended the run, in one line; "" after a complete one.
  const std::string& Message() const { return message_; }
  double Seconds() const { return seconds_; }

private:
  using Clock = std::chrono::steady_clock;

  RunEnd RunStarted();
  RunEnd Fail(const char* function, unsigned int code);
  RunEnd FailedStatus(int status);
  bool IsDone() const;
  bool IsExplainedByLoss() const;
  /// Copies what is there; false when output or camera failed (end_ says which).
  bool Drain(Clock::time_point deadline);
  bool TakeImage(long number);
  bool IsIntact(long number) const;
  void SkipOverwritten(int first, int last);
  TImageLabel Label(long number);
  void ReadTimestampsUpTo(long number);
  void Report();

  ICamera& camera_;
  IImageWriter* writer_;
  TLoopSettings settings_;
  std::function<bool()> isInterrupted_;
  std::function<void(const TProgress&)> onProgress_;
  TRunAccount account_;
  TSoftwareTrigger trigger_;
  std::vector<std::byte> fetched_;   // being copied into
  std::vector<std::byte> lastImage_; // the newest intact one
  TImageLabel lastLabel_;
  std::string message_;
  RunEnd end_ = RunEnd::Complete;
  int endStatus_ = 0;     // of the library, when it ended the run
  int newest_ = 0;        // newest image number seen
  int arrivedInTurn_ = 0; // images that came during the last turn of copying
  long ringSlots_ = 0;    // images that the ring is sure to hold; exact once it has overwritten one
  bool isRingFull_ = false;
  Clock::time_point start_;
  Clock::time_point lastArrival_;
  double seconds_ = 0.0;
};

} // namespace vxtool
