// SPDX-License-Identifier: MIT
// The pixels that the test camera sends.
#pragma once

#include <cstdint>

/// The pixel in column x and row y of the sensor (from 0) of frame n, of so many bits. It tells all three apart.
inline std::uint32_t TestPixel(std::uint32_t x, std::uint32_t y, std::uint64_t n, int bits)
{
  const auto value = static_cast<std::uint32_t>(7 * x + 13 * y + 29 * n);
  return bits > 12 ? value * 11 & ((1U << bits) - 1) : value & ((1U << bits) - 1);
}
