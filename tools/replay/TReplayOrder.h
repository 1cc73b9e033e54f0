// SPDX-License-Identifier: MIT
// When each call of a replay may begin.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <mutex>
#include <vector>

namespace vxtool {

/// Keeps the order of a recording: a call begins when all have ended that had ended before it began there. Calls that were
/// under way together may be so again. Thread-safe.
class TReplayOrder final
{
public:
  using Clock = std::chrono::steady_clock;

  /// @param ends  how many calls end
  explicit TReplayOrder(std::size_t ends) : hasEnded_(ends, false) {}

  /// Blocks until so many calls have ended in the order of the recording; false when the replay was stopped.
  bool AwaitEnds(std::size_t count);
  /// Blocks until that time; false when the replay was stopped.
  bool AwaitTime(Clock::time_point time);
  /// Notes that the call that was this one to end in the recording has ended.
  void NoteEnd(std::size_t rank);
  /// Wakes all threads, for good.
  void Stop();

private:
  std::mutex mutex_;
  std::condition_variable changed_;
  std::vector<bool> hasEnded_;   // guarded by mutex_
  std::size_t endedInOrder_ = 0; // guarded by mutex_; all before it have ended
  bool isStopped_ = false;       // guarded by mutex_
};

} // namespace vxtool
