// SPDX-License-Identifier: MIT
// Counts where every frame of a run went.
#pragma once

#include "tools/ImageData.h"
#include "tools/TTickGapCounter.h"

namespace vxtool {

/// The frame counts of one run. Every image is counted once, in the order of its number, as fetched or overwritten;
/// every fetched image as written or not written. One thread at a time.
class TFrameStatistics final
{
public:
  /// @param hasSteadyRate  whether the camera makes frames at a constant rate, so that timestamps show lost ones
  explicit TFrameStatistics(bool hasSteadyRate) : hasSteadyRate_(hasSteadyRate) {}

  void AddFetched(bool isWritten);
  void AddOverwritten(long count) { counts_.overwritten += count; }
  /// The timestamp of the next delivered image, in order, even if that image was lost afterwards.
  void AddTimestamp(long long ticks);
  /// Pixels that did not fit into the output's bits, of so many images.
  void AddClipped(long pixels, long images);
  /// So many of the images written turned out not to be in the output file.
  void MoveToNotWritten(long count);
  /// Adds the counts of a run of this series of runs, and the images that the camera has lost in it.
  void AddRun(const TFrameCounts& run, long lostInCamera);
  void AddMissed(long images) { counts_.missed += images; }
  void AddLate() { ++counts_.late; }
  /// Ends the run. @param delivered  images that the library received
  /// @param lost  frames that never came, where they are counted: timestamps also have a gap where a frame was late
  void Finish(long delivered, std::optional<long> lost = std::nullopt);

  /// The counts so far; those of delivered and not fetched images are there from Finish() on.
  const TFrameCounts& Counts() const { return counts_; }
  /// Whether the counts add up: if not, this program has an error.
  bool AddsUp() const;
  long LostInCameraSoFar() const { return hasSteadyRate_ ? gaps_.Missing() : 0; }
  long Written() const { return counts_.written; }
  long Fetched() const { return counts_.fetched; }
  long Overwritten() const { return counts_.overwritten; }
  /// The number of the newest image that is fetched or known to be overwritten.
  long LastImage() const { return counts_.fetched + counts_.overwritten; }
  long Timestamps() const { return timestamps_; }

private:
  TFrameCounts counts_;
  TTickGapCounter gaps_;
  long timestamps_ = 0;
  bool hasSteadyRate_;
};

} // namespace vxtool
