// SPDX-License-Identifier: MIT
// Counts the users of an object, so that its owner can wait for them before destroying it.
#pragma once

#include "utility/TMutex.h"

/// Users call Enter() and Leave() around their use; the owner calls WaitUntilUnused() after making sure that
/// no new use can begin. Thread-safe.
class TUseCounter final
{
public:
  void Enter()
  {
    const TLock lock(mutex_);
    ++users_;
  }

  void Leave()
  {
    const TLock lock(mutex_);
    // Under the lock: the owner may destroy this object as soon as it sees no users.
    if (--users_ == 0) unused_.NotifyAll();
  }

  /// Blocks until there are no users.
  void WaitUntilUnused()
  {
    const TLock lock(mutex_);
    unused_.Wait(mutex_, [this]() REQUIRES(mutex_) { return users_ == 0; });
  }

private:
  TMutex mutex_;
  TCondition unused_;
  int users_ GUARDED_BY(mutex_) = 0;
};
