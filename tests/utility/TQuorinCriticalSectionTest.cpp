// SPDX-License-Identifier: MIT
// The recursive lock and its scope guard.
#include "utility/TQuorinCriticalSection.h"

#include "tests/utility/SystemCalls.h"
#include "utility/TAutoQuorinCriticalSection.h"

#include <atomic>
#include <gtest/gtest.h>
#include <unistd.h>

using namespace QuorinUtility;

namespace {

// To the analysis, entering a second time in one function is an error.
int Enter(TQuorinCriticalSection& section) NO_THREAD_SAFETY_ANALYSIS
{
  return section.Enter();
}

int Exit(TQuorinCriticalSection& section) NO_THREAD_SAFETY_ANALYSIS
{
  return section.Exit();
}

} // namespace

TEST(QuorinCriticalSection, EnteredTwiceOpensToOthersAfterTheSecondExit)
{
  TQuorinCriticalSection section;
  EXPECT_EQ(Enter(section), 0);
  EXPECT_EQ(Enter(section), 0);
  std::atomic<pid_t> id{0};
  std::atomic<bool> entered{false};
  std::thread other([&] {
    id = gettid();
    section.Enter();
    entered = true;
    section.Exit();
  });
  EXPECT_TRUE(system_calls::Eventually([&] { return id != 0; }));
  EXPECT_EQ(Exit(section), 0);
  EXPECT_TRUE(system_calls::EventuallyAsleep(id));
  EXPECT_FALSE(entered);
  EXPECT_EQ(Exit(section), 0);
  EXPECT_TRUE(system_calls::Eventually([&] { return entered.load(); }));
  other.join();
}

TEST(AutoQuorinCriticalSection, GuardsItsScopeAndNests)
{
  TQuorinCriticalSection section;
  int count = 0;
  const auto addOne = [&] {
    const TAutoQuorinCriticalSection inner(&section);
    ++count;
  };
  const auto work = [&] {
    for (int i = 0; i < 10000; ++i) {
      const TAutoQuorinCriticalSection outer(&section);
      addOne();
    }
  };
  std::thread other(work);
  work();
  other.join();
  EXPECT_EQ(count, 20000);
}
