// SPDX-License-Identifier: MIT
// The task launcher: order, hand-over, destruction, and tasks or threads that fail.
#include "utility/TQuorinTaskLauncher.h"

#include "tests/utility/SystemCalls.h"
#include "utility/IQuorinTask.h"
#include "utility/TQuorinEvent.h"

#include <cerrno>
#include <functional>
#include <gtest/gtest.h>
#include <numeric>
#include <stdexcept>
#include <vector>

using namespace QuorinUtility;
using system_calls::Eventually;

namespace {

struct Task final : IQuorinTask
{
  explicit Task(std::function<void(void*)> body) : body_(std::move(body)) {}
  void Execute(void* argument) override { body_(argument); }

private:
  std::function<void(void*)> body_;
};

} // namespace

TEST(QuorinTaskLauncher, RunsTasksInTheOrderOfTheirLaunch)
{
  std::vector<int> arguments(200);
  std::iota(arguments.begin(), arguments.end(), 0);
  std::vector<int> seen;
  Task task([&](void* argument) { seen.push_back(*static_cast<int*>(argument)); });
  {
    TQuorinTaskLauncher launcher;
    for (int& argument : arguments) launcher.Launch(&task, &argument);
  }
  EXPECT_EQ(seen, arguments);
}

TEST(QuorinTaskLauncher, RunsOneTaskAtATimeForSeveralLaunchingThreads)
{
  int runs = 0; // unprotected: tasks never overlap
  Task task([&](void*) { ++runs; });
  TQuorinEvent done(false, false);
  Task last([&](void*) { done.Set(); });
  TQuorinTaskLauncher launcher;
  std::vector<std::thread> threads;
  for (int i = 0; i < 3; ++i)
    threads.emplace_back([&] {
      for (int j = 0; j < 300; ++j) launcher.Launch(&task, nullptr);
    });
  for (std::thread& thread : threads) thread.join();
  launcher.Launch(&last, nullptr);
  EXPECT_TRUE(done.Wait(20000));
  EXPECT_EQ(runs, 900);
}

TEST(QuorinTaskLauncher, LaunchWaitsForTheTaskBeforeNotForItsOwn)
{
  TQuorinEvent gate(false, false);
  std::atomic<int> launched{0};
  Task task([&](void*) { gate.Wait(TQuorinEvent::Infinite); });
  TQuorinTaskLauncher launcher;
  launcher.Launch(&task, nullptr); // returns while the task is blocked
  std::atomic<pid_t> id{0};
  std::thread second([&] {
    id = gettid();
    launcher.Launch(&task, nullptr);
    ++launched;
  });
  EXPECT_TRUE(Eventually([&] { return id != 0; }) && system_calls::EventuallyAsleep(id));
  EXPECT_EQ(launched, 0);
  gate.Set();
  EXPECT_TRUE(Eventually([&] { return launched == 1; }));
  second.join();
  gate.Set();
}

TEST(QuorinTaskLauncher, DestructionRunsTheTaskJustLaunched)
{
  int runs = 0;
  Task task([&](void*) { ++runs; });
  for (int i = 0; i < 200; ++i) {
    TQuorinTaskLauncher launcher;
    launcher.Launch(&task, nullptr);
    if (i % 2) launcher.Launch(&task, nullptr);
  }
  EXPECT_EQ(runs, 300);
}

TEST(QuorinTaskLauncher, GoesOnAfterATaskThatThrows)
{
  bool ran = false;
  Task standard([](void*) { throw std::runtime_error("test"); });
  Task other([](void*) { throw 1; });
  Task good([&](void*) { ran = true; });
  {
    TQuorinTaskLauncher launcher;
    launcher.Launch(&standard, nullptr);
    launcher.Launch(&other, nullptr);
    launcher.Launch(&good, nullptr);
    EXPECT_TRUE(launcher.IsAlive());
  }
  EXPECT_TRUE(ran);
}

TEST(QuorinTaskLauncher, WithoutAThreadItIsNotAliveAndStillEnds)
{
  bool ran = false;
  Task task([&](void*) { ran = true; });
  {
    system_calls::Directed directed;
    directed.threadCreationError = EAGAIN;
    TQuorinTaskLauncher launcher;
    EXPECT_FALSE(launcher.IsAlive());
    launcher.Launch(&task, nullptr);
  }
  EXPECT_FALSE(ran);

  Task exits([](void*) { pthread_exit(nullptr); });
  TQuorinTaskLauncher launcher;
  EXPECT_TRUE(launcher.IsAlive());
  launcher.Launch(&exits, nullptr);
  EXPECT_TRUE(Eventually([&] { return !launcher.IsAlive(); }));
}
