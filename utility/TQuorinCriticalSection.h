// SPDX-License-Identifier: MIT
// A lock that the thread owning it may acquire again.
#pragma once

#include "utility/thread_annotations.h"

#include <pthread.h>

namespace QuorinUtility {

/// A recursive lock: the thread that owns it may enter it again and must exit it as often as it entered.
/// Owned by what it protects. Thread-safe. Enter() and Exit() return the POSIX result, 0 for success, and never
/// throw; an Exit() by a thread that does not own the lock is refused with EPERM. The compiler's analysis sees one
/// function at a time, so entering again in a function that is called is fine, and in the same one is an error.
class LOCK_CLASS("mutex") TQuorinCriticalSection final
{
public:
  TQuorinCriticalSection();
  ~TQuorinCriticalSection();
  TQuorinCriticalSection(const TQuorinCriticalSection&) = delete;
  TQuorinCriticalSection& operator=(const TQuorinCriticalSection&) = delete;

  /// Blocks until the calling thread owns the lock.
  int Enter() ACQUIRE();
  int Exit() RELEASE();

private:
  pthread_mutex_t mutex_;
};

} // namespace QuorinUtility
