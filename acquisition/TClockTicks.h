// SPDX-License-Identifier: MIT
// Ticks of a camera's clock as times.
#pragma once

#include <cstdint>

/// Converts tick counts of a clock of known frequency. A plain value; kept for code that reads timing.
class TClockTicks final
{
public:
  /// @param frequency  ticks per second
  explicit TClockTicks(double frequency) : frequency_(frequency) {}

  float ToSeconds(std::int64_t ticks) const { return static_cast<float>(static_cast<double>(ticks) / frequency_); }
  float ToMilliSeconds(std::int64_t ticks) const
  {
    return static_cast<float>(static_cast<double>(ticks) / (frequency_ / 1000.0));
  }

private:
  double frequency_;
};
