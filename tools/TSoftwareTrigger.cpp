// SPDX-License-Identifier: MIT
// When software triggers are sent.
#include "tools/TSoftwareTrigger.h"

#include <algorithm>
#include <thread>

namespace vxtool {

namespace {

constexpr std::chrono::milliseconds kMaxSleep{1}; // waits of the library are in whole ms

TSoftwareTrigger::Clock::duration ToDuration(double seconds)
{
  return std::chrono::duration_cast<TSoftwareTrigger::Clock::duration>(std::chrono::duration<double>(seconds));
}

} // namespace

TSoftwareTrigger::Clock::time_point TSoftwareTrigger::NextDue(Clock::time_point lastArrival) const
{
  if (last_ == Clock::time_point{}) return Clock::now();
  // A trigger that brings no image in this time was lost, or its exposure is only a part of the image.
  const double retrySeconds = 1.5 * imageSeconds_ + 0.2;
  const bool isAnswered = lastArrival > last_;
  return last_ + ToDuration(isAnswered ? periodSeconds_ : std::max(periodSeconds_, retrySeconds));
}

TSoftwareTrigger::Clock::time_point TSoftwareTrigger::SendWhenDue(Clock::time_point lastArrival)
{
  const Clock::time_point due = NextDue(lastArrival);
  if (due > Clock::now() + kMaxSleep) return due;
  std::this_thread::sleep_until(due);
  last_ = Clock::now();
  camera_.SendTrigger(); // a camera that cannot is found when no image comes
  return NextDue(lastArrival);
}

} // namespace vxtool
