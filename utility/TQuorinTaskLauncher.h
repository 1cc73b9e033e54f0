// SPDX-License-Identifier: MIT
// One long-lived thread that runs tasks one after another.
#pragma once

#include "utility/TQuorinWorkThreadRoutine.h"

#include <atomic>
#include <memory>

namespace QuorinUtility {

class IQuorinTask;
class TQuorinEvent;
class TQuorinWorkThread;

/// Runs tasks strictly one after another on its own thread, in the order in which Launch() calls succeeded.
/// Borrows each task until its Execute() has returned. Launch() and IsAlive() are thread-safe; no Launch() may
/// start once destruction has begun. Only the constructor throws, when memory is short.
class TQuorinTaskLauncher final : public TQuorinWorkThreadRoutine
{
public:
  TQuorinTaskLauncher();
  /// Blocks until a task that was launched before has run.
  ~TQuorinTaskLauncher() override;
  TQuorinTaskLauncher(const TQuorinTaskLauncher&) = delete;
  TQuorinTaskLauncher& operator=(const TQuorinTaskLauncher&) = delete;

  /// Waits until the previous task has run, starts @p task and returns without waiting for it. Blocks without limit
  /// behind a task that does not end, and so does the second call when the launcher has no thread: check IsAlive().
  void Launch(IQuorinTask* task, void* argument);

  /// Whether there is a thread to run tasks. False when it could not be made, or a task has ended it.
  bool IsAlive() const;

  /// The loop of the launcher's thread.
  void Run() override;

private:
  void ExecuteCurrentTask();

  std::unique_ptr<TQuorinWorkThread> thread_;
  std::atomic<bool> stopping_{false};
  std::unique_ptr<TQuorinEvent> taskReady_;
  std::unique_ptr<TQuorinEvent> launcherIdle_;
  // Written by the launching thread before it sets taskReady_, cleared by the launcher's thread before it sets
  // launcherIdle_; the loop also looks at the task between the two.
  std::atomic<IQuorinTask*> currentTask_{nullptr};
  void* currentArgument_ = nullptr;
  std::atomic<bool> ended_{false};
};

} // namespace QuorinUtility
