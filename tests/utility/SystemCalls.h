// SPDX-License-Identifier: MIT
// System calls that the tests of this folder direct, and helpers to wait for what other threads do.
#pragma once

#include <chrono>
#include <ctime>
#include <functional>
#include <sys/sysinfo.h>
#include <sys/types.h>
#include <thread>

namespace system_calls {

/// What the calling thread gets from the system while this exists; whatever is left empty is the system's own
/// answer.
struct Directed
{
  Directed();
  ~Directed();
  Directed(const Directed&) = delete;
  Directed& operator=(const Directed&) = delete;

  const timespec* clock = nullptr; ///< what every clock shows
  std::function<void()>
      atTheEdgeOfTimeout;                 ///< called once a timed wait has run out, before it has the mutex again
  int threadCreationError = 0;            ///< what making a thread fails with
  const struct sysinfo* memory = nullptr; ///< what the machine has
  bool memoryRefused = false;
};

constexpr std::chrono::seconds kDeadline{20};

/// Waits until @p condition is true. Returns false after a long time.
template <class Condition>
bool Eventually(Condition condition)
{
  const auto end = std::chrono::steady_clock::now() + kDeadline;
  while (!condition()) {
    if (std::chrono::steady_clock::now() > end) return false;
    std::this_thread::yield();
  }
  return true;
}

/// Waits until the thread with this number sleeps in the kernel.
bool EventuallyAsleep(pid_t thread);

} // namespace system_calls
