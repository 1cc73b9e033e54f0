// SPDX-License-Identifier: MIT
// Work threads: what the routine runs under, how it may end, and threads that cannot be made.
#include "utility/TQuorinWorkThread.h"

#include "tests/utility/SystemCalls.h"
#include "utility/TQuorinEvent.h"
#include "utility/TQuorinWorkThreadRoutine.h"

#include <cerrno>
#include <csignal>
#include <functional>
#include <gtest/gtest.h>
#include <stdexcept>

using namespace QuorinUtility;

namespace {

struct Routine final : TQuorinWorkThreadRoutine
{
  explicit Routine(std::function<void()> body) : body_(std::move(body)) {}
  void Run() override { body_(); }

private:
  std::function<void()> body_;
};

} // namespace

TEST(QuorinWorkThread, RunsTheRoutineOnceAndIsJoinedOnce)
{
  int runs = 0;
  std::thread::id id;
  Routine routine([&] {
    ++runs;
    id = std::this_thread::get_id();
  });
  TQuorinWorkThread thread(&routine, TQuorinWorkThread::eNormalPriority, "a name longer than the kernel keeps");
  EXPECT_TRUE(thread.IsCreated());
  EXPECT_EQ(thread.WaitForCompletion(), 0);
  EXPECT_EQ(runs, 1);
  EXPECT_NE(id, std::this_thread::get_id());
  EXPECT_EQ(thread.WaitForCompletion(), ESRCH);
}

TEST(QuorinWorkThread, CreationFailureIsKnownAndNotJoined)
{
  bool ran = false;
  Routine routine([&] { ran = true; });
  system_calls::Directed directed;
  directed.threadCreationError = EAGAIN;
  TQuorinWorkThread thread(&routine, TQuorinWorkThread::eNormalPriority, "unmade");
  EXPECT_FALSE(thread.IsCreated());
  EXPECT_EQ(thread.WaitForCompletion(), ESRCH);
  EXPECT_FALSE(ran);
}

TEST(QuorinWorkThread, AnExceptionOrAThreadExitEndsOnlyTheThread)
{
  bool unwound = false;
  struct Mark
  {
    bool& mark;
    ~Mark() { mark = true; }
  };
  const std::function<void()> ends[] = {[] { throw std::runtime_error("test"); }, [] { throw 1; },
                                        [&] {
                                          const Mark mark{unwound};
                                          pthread_exit(nullptr);
                                        }};
  for (const auto& end : ends) {
    Routine routine(end);
    TQuorinWorkThread thread(&routine, TQuorinWorkThread::eNormalPriority);
    EXPECT_EQ(thread.WaitForCompletion(), 0);
  }
  EXPECT_TRUE(unwound);
}

TEST(QuorinWorkThread, ApplicationSignalsAreBlockedAndFaultsAreNot)
{
  sigset_t before, inside, after;
  sigemptyset(&inside);
  pthread_sigmask(SIG_SETMASK, nullptr, &before);
  Routine routine([&] { pthread_sigmask(SIG_SETMASK, nullptr, &inside); });
  TQuorinWorkThread thread(&routine, TQuorinWorkThread::eNormalPriority);
  thread.WaitForCompletion();
  pthread_sigmask(SIG_SETMASK, nullptr, &after);
  for (const int signal : {SIGINT, SIGTERM, SIGALRM, SIGUSR1, SIGXFSZ, SIGPIPE, SIGRTMIN}) {
    EXPECT_EQ(sigismember(&inside, signal), 1) << signal;
    EXPECT_EQ(sigismember(&after, signal), sigismember(&before, signal)) << signal;
  }
  EXPECT_EQ(sigismember(&inside, SIGSEGV), 0);
}

TEST(QuorinWorkThread, JoiningItselfIsRefusedAndLeavesTheOwnersJoin)
{
  TQuorinEvent made(false, false);
  TQuorinEvent tried(false, false);
  TQuorinWorkThread* self = nullptr;
  int result = 0;
  Routine routine([&] {
    made.Wait(TQuorinEvent::Infinite);
    result = self->WaitForCompletion();
    tried.Set();
  });
  TQuorinWorkThread thread(&routine, TQuorinWorkThread::eNormalPriority);
  self = &thread;
  made.Set();
  EXPECT_TRUE(tried.Wait(20000));
  EXPECT_EQ(result, EDEADLK);
  EXPECT_EQ(thread.WaitForCompletion(), 0);
}
