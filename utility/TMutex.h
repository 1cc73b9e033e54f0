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

/// A condition variable for a TMutex. What is waited for is a function of the guarded state, called with the mutex
/// owned and best declared REQUIRES it; a wait ends when it returns true. Thread-safe.
class TCondition final
{
public:
  // Not analysed: the lock that the predicate requires is this mutex under its owner's name for it.

  /// Releases @p mutex while it waits, without limit.
  template <class TPredicate>
  void Wait(TMutex& mutex, TPredicate isReached) REQUIRES(mutex) NO_THREAD_SAFETY_ANALYSIS
  {
    std::unique_lock lock(mutex.mutex_, std::adopt_lock);
    condition_.wait(lock, isReached);
    lock.release();
  }

  /// The same for at most @p time on the steady clock. Returns what the predicate answered last.
  template <class TPredicate>
  bool WaitFor(TMutex& mutex, std::chrono::steady_clock::duration time, TPredicate isReached)
      REQUIRES(mutex) NO_THREAD_SAFETY_ANALYSIS
  {
    std::unique_lock lock(mutex.mutex_, std::adopt_lock);
    const bool reached = condition_.wait_for(lock, time, isReached);
    lock.release();
    return reached;
  }

  void NotifyOne() { condition_.notify_one(); }
  void NotifyAll() { condition_.notify_all(); }

private:
  std::condition_variable condition_;
};
