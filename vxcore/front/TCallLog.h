// SPDX-License-Identifier: MIT
// The record of the calls that reached the library.
#pragma once

#include <atomic>
#include <mutex>
#include <string>
#include <vector>

namespace vxcore {

/// Lines of the calls made while the log is on, in the order in which they ended. One for the whole library, see
/// Instance(). Thread-safe. While it is off a check costs one relaxed atomic load (IsOn()).
class TCallLog final
{
public:
  static TCallLog& Instance();

  static bool IsOn() { return on_.load(std::memory_order_relaxed); }
  bool IncludesWaits() const { return withWaits_.load(std::memory_order_relaxed); }

  void Start(bool withWaits);
  void Stop() { on_.store(false, std::memory_order_relaxed); }
  void Clear();
  void Append(std::string line);
  size_t Count();
  /// False when there is no such line.
  bool Get(size_t index, std::string& line);

private:
  TCallLog() = default;

  inline static std::atomic<bool> on_{false};
  std::atomic<bool> withWaits_{true};
  std::mutex mutex_; // guards what follows
  std::vector<std::string> lines_;
};

} // namespace vxcore
