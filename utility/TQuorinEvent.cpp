// SPDX-License-Identifier: MIT
// An event with manual or automatic reset that threads can wait for.
#include "utility/TQuorinEvent.h"

#include <sched.h>

namespace QuorinUtility {

namespace {

constexpr int kMillisecondsPerSecond = 1000;
constexpr long kNanosecondsPerMillisecond = 1000000;
constexpr long kNanosecondsPerSecond = 1000000000;
constexpr int kYieldsBeforeSleeping = 100;
constexpr timespec kDestructionPoll{0, 50000};

} // namespace

/// Owns the mutex during a Wait(). A cancelled thread unwinds through here with the mutex locked, so it is released and
/// the count of waiters is right on every path out.
class TQuorinEvent::TWaiterScope
{
public:
  explicit TWaiterScope(TQuorinEvent& event) : event_(event) { pthread_mutex_lock(&event_.mutex_); }
  ~TWaiterScope()
  {
    if (counted_) --event_.waiters_;
    pthread_mutex_unlock(&event_.mutex_);
  }
  TWaiterScope(const TWaiterScope&) = delete;
  TWaiterScope& operator=(const TWaiterScope&) = delete;

  void Count()
  {
    if (counted_) return;
    counted_ = true;
    ++event_.waiters_;
  }

private:
  TQuorinEvent& event_;
  bool counted_ = false;
};

TQuorinEvent::TQuorinEvent(bool manualReset, bool initialState)
    : signalled_(initialState), manualReset_(manualReset)
{
  pthread_mutex_init(&mutex_, nullptr);
  pthread_cond_init(&condition_, nullptr);
}

TQuorinEvent::~TQuorinEvent()
{
  // The thread that was just released may destroy the event before the Set() that released it has returned. A
  // destructor must not be left by a cancellation of its thread.
  int cancelState = 0;
  pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &cancelState);
  for (int turn = 0; wakers_.load(std::memory_order_acquire) != 0; ++turn) {
    if (turn < kYieldsBeforeSleeping)
      sched_yield();
    else
      nanosleep(&kDestructionPoll, nullptr);
  }
  pthread_cond_destroy(&condition_);
  pthread_mutex_destroy(&mutex_);
  pthread_setcancelstate(cancelState, nullptr);
}

int TQuorinEvent::Set()
{
  pthread_mutex_lock(&mutex_);
  // An event that is signalled already has its waiters awake, or about to be woken by the Set() that signalled it.
  const bool wake = !signalled_ && waiters_ > 0;
  signalled_ = true;
  if (wake) wakers_.fetch_add(1, std::memory_order_relaxed);
  const int result = pthread_mutex_unlock(&mutex_);
  if (wake) {
    // After the unlock: a waiter woken into a locked mutex would have to sleep a second time.
    pthread_cond_broadcast(&condition_);
    wakers_.fetch_sub(1, std::memory_order_release); // the last access: the event may be destroyed from here on
  }
  return result;
}

int TQuorinEvent::Reset()
{
  pthread_mutex_lock(&mutex_);
  signalled_ = false;
  return pthread_mutex_unlock(&mutex_);
}

bool TQuorinEvent::Wait(int timeoutMs)
{
  if (timeoutMs <= 0 && timeoutMs != Infinite) return Look();
  timespec deadline{};
  const bool limited = timeoutMs != Infinite;
  if (limited) deadline = ConvertTimeout(timeoutMs);

  TWaiterScope scope(*this);
  bool found = signalled_;
  while (!found) {
    scope.Count();
    if (WaitOnce(limited ? &deadline : nullptr) != 0) break;
    found = signalled_;
  }
  if (!manualReset_) signalled_ = false;
  return found;
}

// "Not signalled" needs no lock. "Signalled" does: the caller may destroy the event next, and the Set() it owes the
// answer to must have left the mutex by then.
bool TQuorinEvent::Look()
{
  if (!signalled_) return false;
  const TWaiterScope scope(*this);
  return manualReset_ ? signalled_.load() : signalled_.exchange(false);
}

int TQuorinEvent::WaitOnce(const timespec* deadline)
{
  return deadline ? pthread_cond_timedwait(&condition_, &mutex_, deadline)
                  : pthread_cond_wait(&condition_, &mutex_);
}

timespec TQuorinEvent::ConvertTimeout(int timeoutMs)
{
  timespec now{};
  clock_gettime(CLOCK_REALTIME, &now);
  return ConvertTimeout(timeoutMs, now);
}

timespec TQuorinEvent::ConvertTimeout(int timeoutMs, const timespec& now)
{
  timespec deadline = now;
  deadline.tv_sec += timeoutMs / kMillisecondsPerSecond;
  deadline.tv_nsec += (timeoutMs % kMillisecondsPerSecond) * kNanosecondsPerMillisecond;
  if (deadline.tv_nsec > kNanosecondsPerSecond) {
    deadline.tv_nsec -= kNanosecondsPerSecond;
    ++deadline.tv_sec;
  }
  return deadline;
}

} // namespace QuorinUtility
