// SPDX-License-Identifier: MIT
// Counts where every frame of a run went.
#pragma once

#include "tools/ImageData.h"
#include "tools/TTickGapCounter.h"

namespace vxtool {

/// The books of one run. Every image is entered once, in the order of its number, as fetched or overwritten; every
/// fetched image as written or not written. One thread at a time.
class TRunAccount final
{
public:
  /// @param isPaced  whether the camera makes frames at an even pace, so that timestamps tell of lost ones
  explicit TRunAccount(bool isPaced) : isPaced_(isPaced) {}

  void EnterFetched(bool isWritten);
  void EnterOverwritten(long count) { totals_.overwritten += count; }
  /// The timestamp of the next delivered image, in order, whatever became of that image.
  void Timestamp(long long ticks);
  /// An output file that turned out to hold fewer images than were given to it.
  void TakeBackWritten(long count);
  /// Ends the run. @param delivered  images that the library received
  void Finish(long delivered);

  /// The counts so far; those of delivered and not fetched images are there from Finish() on.
  const TRunTotals& Totals() const { return totals_; }
  /// Whether the counts fit together: a false one is a fault of this program.
  bool AddsUp() const;
  long LostInCameraSoFar() const { return isPaced_ ? gaps_.Missing() : 0; }
  long Written() const { return totals_.written; }
  long Fetched() const { return totals_.fetched; }
  long Overwritten() const { return totals_.overwritten; }
  /// Images dealt with so far: the number of the newest one that is fetched or known to be overwritten.
  long LastImage() const { return totals_.fetched + totals_.overwritten; }
  long TimestampsRead() const { return timestamps_; }

private:
  TRunTotals totals_;
  TTickGapCounter gaps_;
  long timestamps_ = 0;
  bool isPaced_;
};

} // namespace vxtool
