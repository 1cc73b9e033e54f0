// SPDX-License-Identifier: MIT
// An event with manual or automatic reset that threads can wait for.
#pragma once

#include <atomic>
#include <cstdint>
#include <ctime>
#include <pthread.h>

namespace QuorinUtility {

/// A flag that threads wait for. With automatic reset a Set() releases one waiter and is used up by it; with
/// manual reset it releases every waiter until Reset(). Thread-safe; no thread may be waiting when it is destroyed,
/// but a Set() that released the destroying thread may not have returned yet. Costs one lock without allocation;
/// Set() makes a system call only when a thread waits. Nothing here throws or logs.
class TQuorinEvent final
{
public:
  /// The time-out that means waiting without limit.
  static constexpr std::int32_t Infinite = -1;

  TQuorinEvent(bool manualReset, bool initialState);
  ~TQuorinEvent();
  TQuorinEvent(const TQuorinEvent&) = delete;
  TQuorinEvent& operator=(const TQuorinEvent&) = delete;

  /// Signals the event. Returns the POSIX result of the unlock, 0 for success; so does Reset().
  int Set();
  int Reset();

  /// Waits until the event is signalled, for at most @p timeoutMs. 0 only looks: no system call, no sleep. A
  /// negative time-out other than Infinite has run out already and is the same. Returns whether the event was found
  /// signalled: false after a time-out or any failure of the wait. The deadline is measured on the real-time clock,
  /// so stepping that clock shortens or lengthens the wait. With automatic reset, a Set() between the end of the
  /// time and the return of the wait is used up although the result is false; callers that cannot miss it check
  /// their state again. A thread cancelled in here leaves the event as if it had never waited.
  bool Wait(int timeoutMs);

  /// The time on the real-time clock that is @p timeoutMs from now.
  static timespec ConvertTimeout(int timeoutMs);
  /// The same, counted from @p now. A sum of exactly one second of nanoseconds is not carried, and a wait for that
  /// deadline fails at once; kept for callers that rely on the deadlines as they have always been.
  static timespec ConvertTimeout(int timeoutMs, const timespec& now);

private:
  class TWaiterScope;
  bool Look();
  int WaitOnce(const timespec* deadline);

  // POSIX types, which the compiler's analysis does not know: a waiting thread may be cancelled, and a standard
  // condition variable ends the program then.
  pthread_mutex_t mutex_;
  pthread_cond_t condition_;
  std::atomic<bool> signalled_; // written under mutex_
  const bool manualReset_;
  int waiters_ = 0; // guarded by mutex_: threads that a Set() has to wake
  /// Calls of Set() that have released the mutex but have still to wake the waiters. Raised under mutex_, so that
  /// a thread that saw the event signalled sees it too.
  std::atomic<int> wakers_{0};
};

} // namespace QuorinUtility
