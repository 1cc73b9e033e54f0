// SPDX-License-Identifier: MIT
// Random numbers that are a function of where they are used, not of how often they were asked for.
#pragma once

#include <cstdint>

namespace vxsim {

/// Spreads every bit of the value over the whole result.
constexpr std::uint64_t MixBits(std::uint64_t value)
{
  value += 0x9E3779B97F4A7C15u;
  value = (value ^ (value >> 30)) * 0xBF58476D1CE4E5B9u;
  value = (value ^ (value >> 27)) * 0x94D049BB133111EBu;
  return value ^ (value >> 31);
}

/// A sequence of random numbers that its seed determines. For one thread.
class TRandomHash final
{
public:
  explicit TRandomHash(std::uint64_t seed, std::uint64_t stream = 0) : state_(MixBits(seed) ^ MixBits(~stream)) {}

  std::uint64_t NextBits() { return MixBits(state_++); }

  /// At least 0, below 1.
  double NextUnit() { return static_cast<double>(NextBits() >> 11) * 0x1.0p-53; }

  double NextBetween(double low, double high) { return low + (high - low) * NextUnit(); }

  /// 0 to count - 1.
  std::uint64_t NextBelow(std::uint64_t count) { return NextBits() % count; }

private:
  std::uint64_t state_;
};

} // namespace vxsim
