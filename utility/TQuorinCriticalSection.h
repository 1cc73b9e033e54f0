// SPDX-License-Identifier: MIT
// A lock that the thread holding it may take again.
#pragma once

#include <pthread.h>

namespace QuorinUtility {

/// A recursive lock: the thread that holds it may enter it again and must exit it as often as it entered.
/// Owned by what it protects. Thread-safe. Enter() and Exit() return the POSIX result, 0 for success, and never
/// throw; an Exit() by a thread that does not hold the section is refused with EPERM.
class TQuorinCriticalSection final
{
public:
  TQuorinCriticalSection();
  ~TQuorinCriticalSection();
  TQuorinCriticalSection(const TQuorinCriticalSection&) = delete;
  TQuorinCriticalSection& operator=(const TQuorinCriticalSection&) = delete;

  /// Blocks until the calling thread holds the section.
  int Enter();
  int Exit();

private:
  pthread_mutex_t mutex_;
};

} // namespace QuorinUtility
