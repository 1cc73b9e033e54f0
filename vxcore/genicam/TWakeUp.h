// SPDX-License-Identifier: MIT
// Wakes waits for frames.
#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>

namespace vxgenicam {

/// Wakes the threads that wait for a frame: when one comes, at the end of the run, or when the camera is lost. Shared by a
/// camera's acquisition and the threads of Aravis. Thread-safe.
class TWakeUp final
{
public:
  using TClock = std::chrono::steady_clock;

  void Wake();
  /// How often Wake() was called. Read before a look for frames, so that WaitAfter() misses none that come after it.
  std::uint64_t Count() const { return count_.load(); }
  /// Waits until Wake() is called more than @p seen times in all, or until the deadline.
  void WaitAfter(std::uint64_t seen, TClock::time_point deadline);

private:
  std::mutex mutex_;
  std::condition_variable changed_;
  std::atomic<std::uint64_t> count_{0};
};

} // namespace vxgenicam
