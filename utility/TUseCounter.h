// SPDX-License-Identifier: MIT
// Counts who is using an object, so that its owner can wait for them before it goes.
#pragma once

#include <condition_variable>
#include <mutex>

/// Users call Enter() and Leave() around their use; the owner calls WaitUntilUnused() after making sure that
/// nobody new can come. Thread-safe.
class TUseCounter final
{
public:
  void Enter()
  {
    const std::lock_guard lock(mutex_);
    ++users_;
  }

  void Leave()
  {
    const std::lock_guard lock(mutex_);
    // Under the lock: the owner may destroy this object as soon as it sees no users.
    if (--users_ == 0) unused_.notify_all();
  }

  /// Blocks until there are no users.
  void WaitUntilUnused()
  {
    std::unique_lock lock(mutex_);
    unused_.wait(lock, [this] { return users_ == 0; });
  }

private:
  std::mutex mutex_;
  std::condition_variable unused_;
  int users_ = 0; // guarded by mutex_
};
