// SPDX-License-Identifier: MIT
// Waits for frames, for the failure of a run, and for their cancellation.
#pragma once

#include "utility/TMutex.h"
#include "utility/TQuorinEvent.h"

#include <atomic>
#include <memory>

/// What application threads wait on while a run goes on. Used by the circular buffer, which owns it. Thread-safe, with
/// one condition: BeginRun() is for when no run is in progress. Nothing throws, except that a lack of memory does in
/// the constructor and in BeginRun().
///
/// A cancellation or a failure ends the waits that are under way when it comes, and those that begin before the next
/// run, whatever happens before they have noticed: such waits and those of the next run share nothing.
class TChangeWaits final
{
public:
  // What Wait() answers.
  static constexpr int kNewFrame = 0;
  static constexpr int kTimedOut = 2;
  static constexpr int kCancelled = 3;
  static constexpr int kFailed = 4;

  TChangeWaits();

  /// No frame, no failure, no cancellation. A wait in progress goes on, unless a failure or a cancellation ended it.
  void BeginRun();
  /// A frame has been counted: ends one wait, or the next one. Acquisition thread only.
  void SignalFrame() { current_.load(std::memory_order_acquire)->event.Set(); }
  /// The run has failed.
  void Fail();
  void Cancel();
  /// As Cancel(), for good.
  void Close();
  /// Waits for at most @p timeoutMs. A cancellation comes before a failure and both before a frame; a frame, failure or
  /// cancellation from before the wait ends it at once.
  int Wait(int timeoutMs);

private:
  /// Shared by the waits of one run, or of several up to one that was cancelled or failed. The flags are guarded by
  /// mutex_, which an annotation cannot name in here.
  struct TState
  {
    QuorinUtility::TQuorinEvent event{false, false};
    bool isCancelled = false;
    bool hasFailed = false;
  };

  void End(bool TState::*reason);

  TMutex mutex_; // not acquired for frames
  std::shared_ptr<TState> state_ GUARDED_BY(mutex_);
  std::atomic<TState*> current_; // state_, for the acquisition thread: it changes only while that thread is idle
  bool isClosed_ GUARDED_BY(mutex_) = false;
};
