// SPDX-License-Identifier: MIT
// How much memory the machine has and has free.
#pragma once

#include <atomic>
#include <cstdint>

namespace QuorinUtility {

/// The machine's memory in bytes, read from the system at every call; buffers and caches do not count as
/// available. The one instance is made when the library is loaded and destroyed when the process exits or the
/// library is unloaded. Thread-safe. A getter that the system refuses returns 0.
class TQuorinMemoryStatistics final
{
public:
  /// The instance, made now if it is not there yet.
  static TQuorinMemoryStatistics* Instance();

  std::uint64_t GetTotalPhysical() const;
  std::uint64_t GetAvailablePhysical() const;
  std::uint64_t GetTotalSwap() const;
  std::uint64_t GetAvailableSwap() const;
  /// Physical memory and swap together.
  std::uint64_t GetTotal() const;
  std::uint64_t GetAvailable() const;

private:
  TQuorinMemoryStatistics() = default;
  static void DeleteInstance();
  static bool CreateAtLoad();

  static std::atomic<TQuorinMemoryStatistics*> mInstance;
  static const bool createdAtLoad_;
};

} // namespace QuorinUtility
