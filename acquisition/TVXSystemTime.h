// SPDX-License-Identifier: MIT
// A wall-clock time in its parts.
#pragma once

#include <cstdint>

/// A local time of day. A plain value.
struct TVXSystemTime
{
  std::int64_t year = 0;      ///< four digits
  std::int64_t month = 0;     ///< 1 to 12
  std::int64_t dayOfWeek = 0; ///< 0 to 6, 0 is Sunday
  std::int64_t day = 0;       ///< 1 to 31
  std::int64_t hour = 0;      ///< 0 to 23
  std::int64_t minute = 0;
  std::int64_t second = 0;
  std::int64_t millisecond = 0;

  /// Becomes the present time. Reentrant.
  void GetCurrentDateAndTimeOfDay();
};
