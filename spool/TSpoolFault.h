// SPDX-License-Identifier: MIT
// The first failure of a run that is written to disk.
#pragma once

#include "utility/TMutex.h"

#include <atomic>
#include <cstdint>
#include <string>

/// Keeps the first failure of a spooled run, so that all threads that write it see that it cannot go on. Owned by the
/// run's pipeline, borrowed by everything below it. Thread-safe.
class TSpoolFault final
{
public:
  /// Keeps "<what> <name>: <text of errno value>" unless there is a failure already, and logs every one. With 0 for the
  /// errno value the text ends with the name. Where there is no memory for the text, the failure counts nevertheless.
  void Raise(const char* what, const std::string& name, int error) noexcept;

  /// Whether the open file @p descriptor still has a name and @p size bytes. If not, it has been removed or truncated,
  /// which is raised with @p name; so is a failure of the check.
  bool CheckFile(int descriptor, std::uint64_t size, const std::string& name) noexcept;

  bool IsRaised() const { return raised_.load(std::memory_order_acquire); }
  /// What the first failure was, "out of memory" when that could not be kept; empty while there is none.
  std::string Text() const;

private:
  std::atomic<bool> raised_{false};
  mutable TMutex mutex_;
  std::string text_ GUARDED_BY(mutex_); // of the first failure, empty if there was no memory for it
};
