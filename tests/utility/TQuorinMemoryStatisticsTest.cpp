// SPDX-License-Identifier: MIT
// What the machine's memory comes to in bytes, and what a process may use of it.
#include "utility/TQuorinMemoryStatistics.h"

#include "tests/support/TScratchDirectory.h"
#include "tests/utility/SystemCalls.h"
#include "utility/control_group.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <limits>

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

TEST(ControlGroup, LimitIsTheNarrowestOfTheGroupsAround)
{
  const TScratchDirectory root;
  const auto write = [&](const std::string& name, const std::string& text) {
    std::filesystem::create_directories(std::filesystem::path(root.Path(name)).parent_path());
    root.File(text, name);
  };
  EXPECT_EQ(ControlGroupMemoryLimit(root.Directory()), std::numeric_limits<std::uint64_t>::max());
  write("proc/self/cgroup", "0::/user/session\n");
  write("sys/fs/cgroup/user/session/memory.max", "max\n");
  EXPECT_EQ(ControlGroupMemoryLimit(root.Directory()), std::numeric_limits<std::uint64_t>::max());
  write("sys/fs/cgroup/user/memory.max", "5000\n");
  EXPECT_EQ(ControlGroupMemoryLimit(root.Directory()), 5000u);
  write("sys/fs/cgroup/memory.max", "4000\n");
  EXPECT_EQ(ControlGroupMemoryLimit(root.Directory()), 4000u);
  write("proc/self/cgroup", "nonsense\n9:\n5:cpu,memory:/container\n3:cpuset:/x\n");
  write("sys/fs/cgroup/memory/memory.limit_in_bytes", "3000\n");
  EXPECT_EQ(ControlGroupMemoryLimit(root.Directory()), 3000u) << "the group's own path is not there";
}
