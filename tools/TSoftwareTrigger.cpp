// SPDX-License-Identifier: MIT
// When software triggers are sent.
#include "tools/TSoftwareTrigger.h"

#include <algorithm>
#include <thread>

namespace vxtool {

namespace {

TSoftwareTrigger::Clock::duration ToDuration(double seconds)
{
  return std::chrono::duration_cast<TSoftwareTrigger::Clock::duration>(std::chrono::duration<double>(seconds));
}

} // namespace

void TSoftwareTrigger::SendWhenDue(Clock::time_point lastArrival)
{
  const auto now = Clock::now();
  const bool isFirst = last_ == Clock::time_point{};
  const bool isAnswered = lastArrival > last_;
  // An exposure that is part of an accumulated image brings no image: its trigger counts as answered after its
  // time.
  const double retrySeconds = 1.5 * imageSeconds_ + 0.2;
  const double waitSeconds = isAnswered ? periodSeconds_ : std::max(periodSeconds_, retrySeconds);
  if (!isFirst && now - last_ < ToDuration(waitSeconds)) {
    if (isAnswered)
      std::this_thread::sleep_until(std::min(last_ + ToDuration(waitSeconds), now + ToDuration(0.1)));
    return;
  }
  last_ = now;
  camera_.SendTrigger(); // a camera that cannot is found when no image comes
}

} // namespace vxtool
