// SPDX-License-Identifier: MIT
// Whether calls are recorded.
#pragma once

#include <atomic>
#include <cstdint>

namespace Trace {

/// Whose calls a record is of. Combined as bits.
enum Layer : unsigned int
{
  kApi = 1, ///< calls of the program
  kCore = 2 ///< calls into the feature library
};

/// The layers whose calls are recorded; 0 unless VXMCD_TRACE asks for some.
extern std::atomic<unsigned int> recordedLayers;

/// Costs one relaxed load.
inline bool IsOn(unsigned int layers) noexcept
{
  return (recordedLayers.load(std::memory_order_relaxed) & layers) != 0;
}

/// The clock of the records: cycles where the system's own clock counts them, else ns of CLOCK_MONOTONIC.
std::uint64_t Ticks() noexcept;

/// Notes that a retrieval function has written these pixels to the caller's array, for the record of the call that is under
/// way in this thread. Nothing without one.
void NoteCopiedPixels(const void* pixels, std::uint64_t bytes) noexcept;

} // namespace Trace
