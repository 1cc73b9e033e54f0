// SPDX-License-Identifier: MIT
// Leaves a thread as it was found.
#pragma once

#include <cerrno>
#include <pthread.h>

/// Keeps the state of the thread during what is not a call of its own: restores errno, and nothing is a cancellation point
/// while it lives. For the thread that makes it.
class TCallerState final
{
public:
  TCallerState() : errno_(errno) { pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &cancelState_); }
  ~TCallerState()
  {
    pthread_setcancelstate(cancelState_, nullptr);
    errno = errno_;
  }
  TCallerState(const TCallerState&) = delete;
  TCallerState& operator=(const TCallerState&) = delete;

private:
  int errno_;
  int cancelState_ = 0;
};
