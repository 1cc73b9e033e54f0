// SPDX-License-Identifier: MIT
// Finds frames that a camera produced and never delivered, from the gaps between timestamps.
#pragma once

#include <vector>

namespace vxtool {

/// Takes the timestamps of the delivered images of one run in their order and counts the frames missing between
/// them, for a camera that makes frames at a constant rate. The frame period is learned from the run itself, as the
/// lower quartile of the first intervals, because the camera's tick frequency is not known here: up to three quarters
/// of these may have a gap. A camera that loses more than that looks like a slower camera. Two images show nothing:
/// their interval is the frame period. One thread at a time.
class TTickGapCounter final
{
public:
  void Add(long long ticks);
  /// Frames missing between the first and the last timestamp so far.
  long Missing() const;

private:
  long MissingIn(long long interval, double framePeriod) const;

  long long last_ = 0;
  bool hasLast_ = false;
  std::vector<long long> learning_; // intervals until the frame period is known
  double framePeriod_ = 0.0;        // in ticks, 0 while learning
  long missing_ = 0;                // since the frame period is known
};

} // namespace vxtool
