// SPDX-License-Identifier: MIT
// Times in microseconds.
#include "utility/TQuorinTime.h"

#include <chrono>
#include <gtest/gtest.h>

TEST(QuorinTime, ShowsTheSystemClockInMicroseconds)
{
  using namespace std::chrono;
  const auto now = [] { return duration_cast<microseconds>(system_clock::now().time_since_epoch()).count(); };
  TQuorinTime first;
  TQuorinTime second;
  const auto before = now();
  EXPECT_EQ(TQuorinTime::GetCurrentSystemTime(first), 0);
  EXPECT_EQ(second.GetCurrentSystemTime(), 0);
  const auto after = now();
  EXPECT_GE(first.Microseconds(), static_cast<std::uint64_t>(before));
  EXPECT_GE(second.Microseconds(), first.Microseconds());
  EXPECT_LE(second.Microseconds(), static_cast<std::uint64_t>(after));
}

TEST(QuorinTime, SumAndDifferenceWrapAround)
{
  const TQuorinTime early(1000);
  const TQuorinTime late(1500);
  EXPECT_EQ((late - early).Microseconds(), 500u);
  EXPECT_EQ((early - late).Microseconds(), UINT64_MAX - 499);
  EXPECT_EQ(((early - late) + late).Microseconds(), 1000u);
}
