// SPDX-License-Identifier: MIT
// A thread that runs a routine object.
#pragma once

#include <atomic>
#include <pthread.h>

namespace QuorinUtility {

class TQuorinWorkThreadRoutine;

/// A thread that runs one routine and ends with it. The routine is borrowed until then.
/// Make it as the last act of the owner's constructor: the routine runs at once. The destructor neither joins nor
/// detaches; owners call WaitForCompletion() first. Thread-safe. Application signal handlers do not run on the
/// thread: every signal is blocked there except those that report a fault of the thread itself. A thread that
/// cannot be made is logged and shows in IsCreated(); nothing here throws.
class TQuorinWorkThread final
{
public:
  /// All priorities are alike.
  enum ePriority
  {
    eNormalPriority = 0
  };

  /// @p name, if any, is what debuggers and process lists show; 15 characters of it count.
  TQuorinWorkThread(TQuorinWorkThreadRoutine* routine, ePriority priority, const char* name = nullptr);
  ~TQuorinWorkThread() = default;
  TQuorinWorkThread(const TQuorinWorkThread&) = delete;
  TQuorinWorkThread& operator=(const TQuorinWorkThread&) = delete;

  /// Blocks until the routine has returned. Returns the result of the join: 0, EDEADLK on the thread itself, or
  /// ESRCH at once when the thread was never made or has been joined by an earlier call. Not a cancellation point,
  /// since owners call it in their destructors.
  int WaitForCompletion();

  /// Whether the thread was made. It may have ended since.
  bool IsCreated() const { return created_; }

  /// The start function: runs the routine and returns null.
  static void* DispatchRoutine(void* routine);

private:
  pthread_t thread_{};
  bool created_ = false; // constant after construction
  std::atomic<bool> joinable_{false};
};

} // namespace QuorinUtility
