// SPDX-License-Identifier: MIT
// Mutexes that clang's thread-safety analysis knows, with their scopes and condition waits.
#pragma once

#include "utility/thread_annotations.h"

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <shared_mutex>

/// A std::mutex whose use the compiler checks. Thread-safe; not recursive. Members that it protects are GUARDED_BY it.
class LOCK_CLASS("mutex") TMutex final
{
public:
  TMutex() = default;
  TMutex(const TMutex&) = delete;
  TMutex& operator=(const TMutex&) = delete;

  void Lock() ACQUIRE() { mutex_.lock(); }
  void Unlock() RELEASE() { mutex_.unlock(); }

private:
  friend class TCondition;
  std::mutex mutex_;
};

/// The same for a std::shared_mutex: many readers, or one writer.
class LOCK_CLASS("mutex") TSharedMutex final
{
public:
  TSharedMutex() = default;
  TSharedMutex(const TSharedMutex&) = delete;
  TSharedMutex& operator=(const TSharedMutex&) = delete;

  void Lock() ACQUIRE() { mutex_.lock(); }
  void Unlock() RELEASE() { mutex_.unlock(); }
  void LockShared() ACQUIRE_SHARED() { mutex_.lock_shared(); }
  void UnlockShared() RELEASE_SHARED() { mutex_.unlock_shared(); }

private:
  std::shared_mutex mutex_;
};

/// Owns a TMutex, or a TSharedMutex alone, to the end of a scope. Used by the one thread that made it.
template <class TMutexType>
class SCOPED_LOCK_CLASS TLock final
{
public:
  explicit TLock(TMutexType& mutex) ACQUIRE(mutex) : mutex_(mutex) { mutex_.Lock(); }
  ~TLock() RELEASE()
  {
    if (isOwner_) mutex_.Unlock();
  }
  TLock(const TLock&) = delete;
  TLock& operator=(const TLock&) = delete;

  /// For a stretch of the scope that is to run without the mutex.
  void Unlock() RELEASE()
  {
    isOwner_ = false;
    mutex_.Unlock();
  }
  void Relock() ACQUIRE()
  {
    mutex_.Lock();
    isOwner_ = true;
  }

private:
  TMutexType& mutex_;
  bool isOwner_ = true;
};

/// Owns a TSharedMutex together with other readers, to the end of a scope.
class SCOPED_LOCK_CLASS TSharedLock final
{
public:
  explicit TSharedLock(TSharedMutex& mutex) ACQUIRE_SHARED(mutex) : mutex_(mutex) { mutex_.LockShared(); }
  ~TSharedLock() RELEASE_GENERIC() { mutex_.UnlockShared(); }
  TSharedLock(const TSharedLock&) = delete;
  TSharedLock& operator=(const TSharedLock&) = delete;

private:
  TSharedMutex& mutex_;
};

/// A condition variable for a TMutex. Callers wait in a loop that looks at the guarded state: a wait may end without a
/// notification. (The analysis does not follow a predicate given as a lambda.) Thread-safe.
class TCondition final
{
public:
  /// Releases @p mutex, waits without limit and acquires it again.
  void Wait(TMutex& mutex) REQUIRES(mutex)
  {
    std::unique_lock lock(mutex.mutex_, std::adopt_lock);
    condition_.wait(lock);
    lock.release();
  }

  /// The same, up to @p deadline at most; whether it has not passed yet.
  bool WaitUntil(TMutex& mutex, std::chrono::steady_clock::time_point deadline) REQUIRES(mutex)
  {
    std::unique_lock lock(mutex.mutex_, std::adopt_lock);
    const bool isInTime = condition_.wait_until(lock, deadline) == std::cv_status::no_timeout;
    lock.release();
    return isInTime;
  }

  void NotifyOne() { condition_.notify_one(); }
  void NotifyAll() { condition_.notify_all(); }

private:
  std::condition_variable condition_;
};
