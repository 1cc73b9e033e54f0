// SPDX-License-Identifier: MIT
// The newest timestamps of a run.
#include "acquisition/TTimestampRepository.h"

#include <gtest/gtest.h>

#include <chrono>
#include <ctime>

namespace {

/// In whole seconds. std::time() reads a coarser clock, which may still show the second before.
std::time_t Now()
{
  return std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
}

TEST(TimestampRepository, KeepsTheNewestUpToItsCapacity)
{
  TTimestampRepository repository(4);
  std::int64_t ticks = -1;
  EXPECT_EQ(repository.GetTimestamp(0, ticks), 1);

  for (std::int64_t frame = 0; frame < 5; ++frame) repository.AddTimestamp(100 + frame);
  EXPECT_EQ(repository.GetTimestamp(0, ticks), 1) << "overwritten by the fifth";
  EXPECT_EQ(ticks, -1);
  for (std::uint64_t index = 1; index < 5; ++index) {
    ASSERT_EQ(repository.GetTimestamp(index, ticks), 0);
    EXPECT_EQ(ticks, 100 + static_cast<std::int64_t>(index));
  }
  EXPECT_EQ(repository.GetTimestamp(5, ticks), 1);
  EXPECT_EQ(repository.Throughput(), 5u);
  EXPECT_EQ(repository.CurrentSize(), 4u);
  EXPECT_EQ(repository.GetTimestampForFirstFrame(), 100);
}

TEST(TimestampRepository, RemembersWhenTheFirstFrameCame)
{
  TTimestampRepository repository;
  EXPECT_GE(repository.Capacity(), 1000000u);
  const std::time_t before = Now();
  repository.AddTimestamp(7);
  const std::time_t after = Now();

  const TVXSystemTime first = repository.GetTimeOfDayForFirstFrame();
  std::tm local{};
  local.tm_year = static_cast<int>(first.year) - 1900;
  local.tm_mon = static_cast<int>(first.month) - 1;
  local.tm_mday = static_cast<int>(first.day);
  local.tm_hour = static_cast<int>(first.hour);
  local.tm_min = static_cast<int>(first.minute);
  local.tm_sec = static_cast<int>(first.second);
  local.tm_isdst = -1;
  const std::time_t stored = std::mktime(&local);
  EXPECT_GE(stored, before);
  EXPECT_LE(stored, after);
  EXPECT_EQ(local.tm_wday, first.dayOfWeek);
  EXPECT_LT(first.millisecond, 1000);
}

} // namespace
