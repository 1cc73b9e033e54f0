// SPDX-License-Identifier: MIT
// A wall-clock time in its parts.
#include "acquisition/TVXSystemTime.h"

#include <ctime>
#include <sys/time.h>

void TVXSystemTime::GetCurrentDateAndTimeOfDay()
{
  timeval now{};
  gettimeofday(&now, nullptr);
  tm local{};
  localtime_r(&now.tv_sec, &local);

  year = local.tm_year + 1900;
  month = local.tm_mon + 1;
  dayOfWeek = local.tm_wday;
  day = local.tm_mday;
  hour = local.tm_hour;
  minute = local.tm_min;
  second = local.tm_sec;
  millisecond = now.tv_usec / 1000;
}
