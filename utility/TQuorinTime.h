// SPDX-License-Identifier: MIT
// Time in microseconds.
#pragma once

#include <cstdint>

/// Microseconds since the Unix epoch on the real-time clock, or the difference of two such times. A plain value.
class TQuorinTime final
{
public:
  constexpr TQuorinTime() = default;
  explicit constexpr TQuorinTime(std::uint64_t microseconds) : microseconds_(microseconds) {}

  /// Fills @p out with the current time. Returns 0.
  static int GetCurrentSystemTime(TQuorinTime& out);
  /// The same for this object.
  int GetCurrentSystemTime();

  constexpr std::uint64_t Microseconds() const { return microseconds_; }

private:
  std::uint64_t microseconds_ = 0;
};

/// Sum and difference wrap around without a check: an earlier time minus a later one is a very large count.
TQuorinTime operator+(const TQuorinTime& left, const TQuorinTime& right);
TQuorinTime operator-(const TQuorinTime& left, const TQuorinTime& right);
