// SPDX-License-Identifier: MIT
// When each call of a replay may begin.
#include "tools/replay/TReplayOrder.h"

namespace vxtool {

bool TReplayOrder::AwaitEnds(std::size_t count)
{
  std::unique_lock lock(mutex_);
  changed_.wait(lock, [&] { return isStopped_ || endedInOrder_ >= count; });
  return !isStopped_;
}

bool TReplayOrder::AwaitTime(Clock::time_point time)
{
  std::unique_lock lock(mutex_);
  changed_.wait_until(lock, time, [&] { return isStopped_; });
  return !isStopped_;
}

void TReplayOrder::NoteEnd(std::size_t rank)
{
  const std::lock_guard lock(mutex_);
  hasEnded_[rank] = true;
  const std::size_t before = endedInOrder_;
  while (endedInOrder_ < hasEnded_.size() && hasEnded_[endedInOrder_]) ++endedInOrder_;
  if (endedInOrder_ != before) changed_.notify_all();
}

void TReplayOrder::Stop()
{
  const std::lock_guard lock(mutex_);
  isStopped_ = true;
  changed_.notify_all();
}

} // namespace vxtool
