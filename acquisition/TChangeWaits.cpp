// SPDX-License-Identifier: MIT
// Waits for frames, for the failure of a run, and for their cancellation.
#include "acquisition/TChangeWaits.h"

#include <utility>

TChangeWaits::TChangeWaits() : state_(std::make_shared<TState>()), current_(state_.get()) {}

void TChangeWaits::BeginRun()
{
  std::shared_ptr<TState> ended; // freed after the lock, unless a thread still waits with it
  const TLock lock(mutex_);
  if (isClosed_) return;
  if (state_->isCancelled || state_->hasFailed) {
    ended = std::exchange(state_, std::make_shared<TState>());
    current_.store(state_.get(), std::memory_order_release);
  }
  state_->event.Reset();
}

void TChangeWaits::Fail()
{
  End(&TState::hasFailed);
}

void TChangeWaits::Cancel()
{
  End(&TState::isCancelled);
}

void TChangeWaits::Close()
{
  {
    const TLock lock(mutex_);
    isClosed_ = true;
  }
  Cancel();
}

void TChangeWaits::End(bool TState::*reason)
{
  const TLock lock(mutex_);
  (*state_).*reason = true;
  state_->event.Set();
}

int TChangeWaits::Wait(int timeoutMs)
{
  std::shared_ptr<TState> state;
  {
    const TLock lock(mutex_);
    state = state_;
  }
  const bool isSignalled = state->event.Wait(timeoutMs);
  const TLock lock(mutex_);
  // The event wakes one waiter, and one whose time runs out may use it up: each waiter that leaves wakes the next.
  if (state->isCancelled || state->hasFailed) state->event.Set();
  if (!isSignalled) return kTimedOut;
  if (state->isCancelled) return kCancelled;
  return state->hasFailed ? kFailed : kNewFrame;
}
