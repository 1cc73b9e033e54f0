// SPDX-License-Identifier: MIT
// The recursive lock and its scope guard.
#include "utility/TQuorinCriticalSection.h"

#include "tests/utility/SystemCalls.h"
#include "utility/TAutoQuorinCriticalSection.h"

#include <atomic>
#include <gtest/gtest.h>
#include <unistd.h>

using namespace QuorinUtility;

TEST(QuorinCriticalSection, EnteredTwiceOpensToOthersAfterTheSecondExit)
{
  TQuorinCriticalSection section;
  EXPECT_EQ(section.Enter(), 0);
  EXPECT_EQ(section.Enter(), 0);
  std::atomic<pid_t> id{0};
  std::atomic<bool> entered{false};
  std::thread other([&] {
    id = gettid();
    section.Enter();
    entered = true;
    section.Exit();
  });
  EXPECT_TRUE(system_calls::Eventually([&] { return id != 0; }));
  EXPECT_EQ(section.Exit(), 0);
  EXPECT_TRUE(system_calls::EventuallyAsleep(id));
  EXPECT_FALSE(entered);
  EXPECT_EQ(section.Exit(), 0);
  EXPECT_TRUE(system_calls::Eventually([&] { return entered.load(); }));
  other.join();
}

TEST(AutoQuorinCriticalSection, GuardsItsScopeAndNests)
{
  TQuorinCriticalSection section;
  int count = 0;
  const auto work = [&] {
    for (int i = 0; i < 10000; ++i) {
      const TAutoQuorinCriticalSection outer(&section);
      const TAutoQuorinCriticalSection inner(&section);
      ++count;
    }
  };
  std::thread other(work);
  work();
  other.join();
  EXPECT_EQ(count, 20000);
}
