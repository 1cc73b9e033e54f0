// SPDX-License-Identifier: MIT
// Frames are painted with the device's lock released.
#pragma once

#include "vxcore/backend/IFeature.h"

#include <atomic>
#include <condition_variable>

namespace vxsim {

using vxcore::TDeviceLock;

/// One thread at a time paints a frame without the device's lock; calls after which no buffer may be written wait for
/// its end. Owned by TAcquisition. Everything but the end of a stamped frame is guarded by the device's lock.
class TPaintingTurn final
{
public:
  /// A buffer and the painter are in use.
  bool IsPainting() const { return painting_; }
  /// No frame may be begun: one is being painted, or a call waits for its end.
  bool IsTaken() const { return painting_ || waiting_ > 0; }
  bool HasWaiters() const { return waiting_ > 0; }

  /// Runs @p paint with the lock released.
  template <typename Paint>
  void Run(TDeviceLock& lock, Paint&& paint)
  {
    painting_ = true;
    lock.unlock();
    paint();
    lock.lock();
    painting_ = false;
    if (waiting_ > 0) done_.notify_all();
  }

  /// Releases the lock for good and runs @p write, which needs nothing that the lock guards.
  template <typename Write>
  void RunLast(TDeviceLock& lock, Write&& write)
  {
    lastWriters_.fetch_add(1, std::memory_order_relaxed);
    lock.unlock();
    write();
    if (lastWriters_.fetch_sub(1, std::memory_order_release) == 1) lastWriters_.notify_all();
  }

  /// Waits until no buffer is being written. True when the lock was released meanwhile.
  bool WaitUntilDone(TDeviceLock& lock)
  {
    const bool waited = painting_;
    if (painting_) {
      ++waiting_;
      while (painting_) done_.wait(lock);
      --waiting_;
    }
    // These write without the lock, so it can be kept meanwhile.
    while (const int writers = lastWriters_.load(std::memory_order_acquire)) lastWriters_.wait(writers);
    return waited;
  }

private:
  std::condition_variable done_;
  bool painting_ = false;
  int waiting_ = 0;
  std::atomic<int> lastWriters_{0}; ///< grows under the lock, shrinks without it
};

} // namespace vxsim
