// SPDX-License-Identifier: MIT
// What the machine's memory comes to in bytes.
#include "utility/TQuorinMemoryStatistics.h"

#include "tests/utility/SystemCalls.h"

#include <gtest/gtest.h>

using QuorinUtility::TQuorinMemoryStatistics;

TEST(QuorinMemoryStatistics, MultipliesInTheUnitAndLeavesOutBuffers)
{
  struct sysinfo memory = {};
  memory.mem_unit = 4096;
  memory.totalram = 0x1000000; // 64 GiB
  memory.freeram = 0x200000;
  memory.bufferram = 0x100000;
  memory.totalswap = 0x400000;
  memory.freeswap = 3;
  system_calls::Directed directed;
  directed.memory = &memory;
  const TQuorinMemoryStatistics* statistics = TQuorinMemoryStatistics::Instance();
  EXPECT_EQ(statistics, TQuorinMemoryStatistics::Instance());
  EXPECT_EQ(statistics->GetTotalPhysical(), 0x1000000000u);
  EXPECT_EQ(statistics->GetAvailablePhysical(), 0x200000000u);
  EXPECT_EQ(statistics->GetTotalSwap(), 0x400000000u);
  EXPECT_EQ(statistics->GetAvailableSwap(), 3u * 4096);
  EXPECT_EQ(statistics->GetTotal(), 0x1400000000u);
  EXPECT_EQ(statistics->GetAvailable(), 0x200003000u);
  directed.memoryRefused = true;
  EXPECT_EQ(statistics->GetAvailable(), 0u);
}
