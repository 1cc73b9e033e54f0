// SPDX-License-Identifier: MIT
// Time in microseconds.
#include "utility/TQuorinTime.h"

#include <sys/time.h>

namespace {

constexpr std::uint64_t kMicrosecondsPerSecond = 1000000;

} // namespace

int TQuorinTime::GetCurrentSystemTime(TQuorinTime& out)
{
  timeval now{};
  gettimeofday(&now, nullptr);
  out.microseconds_ =
      static_cast<std::uint64_t>(now.tv_sec) * kMicrosecondsPerSecond + static_cast<std::uint64_t>(now.tv_usec);
  return 0;
}

int TQuorinTime::GetCurrentSystemTime()
{
  return GetCurrentSystemTime(*this);
}

TQuorinTime operator+(const TQuorinTime& left, const TQuorinTime& right)
{
  return TQuorinTime(left.Microseconds() + right.Microseconds());
}

TQuorinTime operator-(const TQuorinTime& left, const TQuorinTime& right)
{
  return TQuorinTime(left.Microseconds() - right.Microseconds());
}
