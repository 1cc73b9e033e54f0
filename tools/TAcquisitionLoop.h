// SPDX-License-Identifier: MIT
// Runs one acquisition: waits, copies every image out, hands it on, counts, and knows when to stop.
#pragma once

#include "tools/ICamera.h"
#include "tools/IImageWriter.h"
#include "tools/RunProgress.h"
#include "tools/TRunAccount.h"
#include "tools/TRunWatch.h"

#include <chrono>
#include <functional>
#include <string>
#include <vector>

namespace vxtool {

/// One acquisition from start to end, on the caller's thread. Borrows camera, writer and callbacks until Run()
/// returns. Images are asked for by number, so that a skipped one is known. An image whose buffer may have
/// been filled anew while it was copied counts as overwritten and is not written.
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
  RunEnd Fail(const std::string& message);
  RunEnd FailedStatus(int status);
  bool IsDone() const;
  bool IsExplainedByLoss() const;
  /// Copies what is there; false when output or camera failed (end_ says which).
  bool Drain(Clock::time_point deadline);
  bool TakeImage(long number);
  void SkipOverwritten(int first, int last);
  bool StartsAtZero() const;
  void Report();

  ICamera& camera_;
  IImageWriter* writer_;
  TLoopSettings settings_;
  std::function<bool()> isInterrupted_;
  std::function<void(const TProgress&)> onProgress_;
  TRunAccount account_;
  TRunWatch watch_;
  std::vector<std::byte> fetched_;   // being copied into
  std::vector<std::byte> lastImage_; // the newest intact one
  TImageLabel lastLabel_;
  std::string message_;
  RunEnd end_ = RunEnd::Complete;
  int endStatus_ = 0;     // of the library, when it ended the run
  int newest_ = 0;        // newest image number seen
  int arrivedInTurn_ = 0; // images that came during the last turn of copying
  long ringSlots_ = 0;    // images that the ring holds, known once it has overwritten one
  bool isRingFull_ = false;
  double seconds_ = 0.0;
};

} // namespace vxtool
