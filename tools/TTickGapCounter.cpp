// SPDX-License-Identifier: MIT
// Learns the frame period of a run and counts the frames that gaps leave out.
#include "tools/TTickGapCounter.h"

#include <algorithm>
#include <cmath>

namespace vxtool {

namespace {

constexpr std::size_t kLearningIntervals = 256;

double FramePeriod(std::vector<long long> intervals)
{
  if (intervals.empty()) return 0.0;
  const auto quarter = intervals.begin() + static_cast<std::ptrdiff_t>(intervals.size() / 4);
  std::nth_element(intervals.begin(), quarter, intervals.end());
  return static_cast<double>(*quarter);
}

} // namespace

long TTickGapCounter::MissingIn(long long interval, double framePeriod) const
{
  return framePeriod > 0.0 ? std::max(0L, std::lround(static_cast<double>(interval) / framePeriod) - 1) : 0;
}

void TTickGapCounter::Add(long long ticks)
{
  const long long interval = ticks - last_;
  const bool isUsable = hasLast_ && interval > 0; // a clock that went back starts a new stretch
  last_ = ticks;
  hasLast_ = true;
  if (!isUsable) return;
  if (framePeriod_ > 0.0) {
    missing_ += MissingIn(interval, framePeriod_);
    return;
  }
  learning_.push_back(interval);
  if (learning_.size() < kLearningIntervals) return;
  missing_ = Missing();
  framePeriod_ = FramePeriod(learning_);
  learning_.clear();
}

long TTickGapCounter::Missing() const
{
  const double framePeriod = FramePeriod(learning_);
  long missing = missing_;
  for (const long long interval : learning_) missing += MissingIn(interval, framePeriod);
  return missing;
}

} // namespace vxtool
