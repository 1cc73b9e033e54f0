// SPDX-License-Identifier: MIT
// Events: who is released by a Set, when a wait ends, and what its deadline is.
#include "utility/TQuorinEvent.h"

#include "tests/utility/SystemCalls.h"

#include <gtest/gtest.h>
#include <list>
#include <memory>
#include <unistd.h>

using QuorinUtility::TQuorinEvent;
using system_calls::Directed;
using system_calls::Eventually;
using system_calls::EventuallyAsleep;

namespace {

constexpr long kHalfMinuteMs = 30000;

/// A thread that waits for an event once.
class Waiter
{
public:
  explicit Waiter(TQuorinEvent& event, int timeoutMs = TQuorinEvent::Infinite)
      : thread_([this, &event, timeoutMs] {
          id_ = gettid();
          found_ = event.Wait(timeoutMs);
          done_ = true;
        })
  {
    asleep_ = Eventually([this] { return id_ != 0; }) && (done_ || EventuallyAsleep(id_));
  }
  ~Waiter() { thread_.join(); }

  bool IsWaiting() const { return asleep_ && !done_; }
  bool IsReleased() const { return done_ && found_; }
  pid_t Id() const { return id_; }

private:
  std::atomic<pid_t> id_{0};
  std::atomic<bool> done_{false};
  std::atomic<bool> found_{false};
  bool asleep_ = false;
  std::thread thread_; // last: it uses the others
};

} // namespace

TEST(QuorinEvent, LookingNeverSleepsAndUsesUpOnlyAnAutoResetEvent)
{
  int sleeps = 0;
  Directed directed;
  directed.atTheEdgeOfTimeout = [&sleeps] { ++sleeps; };
  for (const bool manual : {false, true}) {
    TQuorinEvent event(manual, false);
    for (const int timeoutMs : {0, -2, -700, -2500}) EXPECT_FALSE(event.Wait(timeoutMs));
    EXPECT_EQ(event.Set(), 0);
    EXPECT_TRUE(event.Wait(0));
    EXPECT_EQ(event.Wait(TQuorinEvent::Infinite * 2), manual) << "a deadline in the past";
    EXPECT_EQ(event.Set(), 0);
    EXPECT_EQ(event.Reset(), 0);
    EXPECT_FALSE(event.Wait(0));
    EXPECT_TRUE(TQuorinEvent(manual, true).Wait(TQuorinEvent::Infinite));
  }
  EXPECT_EQ(sleeps, 0);
}

TEST(QuorinEvent, OneSetReleasesExactlyOneWaiterOfAnAutoResetEvent)
{
  TQuorinEvent event(false, false);
  Waiter first(event);
  Waiter second(event, kHalfMinuteMs);
  ASSERT_TRUE(first.IsWaiting() && second.IsWaiting());
  event.Set();
  EXPECT_TRUE(Eventually([&] { return first.IsReleased() || second.IsReleased(); }));
  EXPECT_TRUE(EventuallyAsleep(first.IsReleased() ? second.Id() : first.Id()));
  EXPECT_NE(first.IsReleased(), second.IsReleased());
  event.Set();
  EXPECT_TRUE(Eventually([&] { return first.IsReleased() && second.IsReleased(); }));
  EXPECT_FALSE(event.Wait(0));
}

TEST(QuorinEvent, OneSetReleasesEveryWaiterOfAManualResetEvent)
{
  TQuorinEvent event(true, false);
  std::list<Waiter> waiters;
  for (int i = 0; i < 4; ++i) ASSERT_TRUE(waiters.emplace_back(event).IsWaiting());
  event.Set();
  for (const Waiter& waiter : waiters) EXPECT_TRUE(Eventually([&] { return waiter.IsReleased(); }));
  EXPECT_TRUE(event.Wait(0));
}

TEST(QuorinEvent, DeadlineCarriesNanosecondsExceptAtExactlyOneSecond)
{
  const auto expect = [](int timeoutMs, timespec now, long seconds, long nanoseconds) {
    const timespec deadline = TQuorinEvent::ConvertTimeout(timeoutMs, now);
    EXPECT_EQ(deadline.tv_sec, seconds) << timeoutMs;
    EXPECT_EQ(deadline.tv_nsec, nanoseconds) << timeoutMs;
  };
  expect(2500, {100, 600000000}, 103, 100000000);
  expect(400, {100, 600000000}, 100, 1000000000);
  expect(400, {100, 600000001}, 101, 1);
  expect(-2500, {100, 600000000}, 98, 100000000);
  expect(-700, {100, 600000000}, 100, -100000000);
  expect(2147483647, {100, 0}, 2147583, 647000000);
}

TEST(QuorinEvent, WaitFailsAtOnceForADeadlineOfExactlyOneSecondOfNanoseconds)
{
  timespec clock{};
  clock_gettime(CLOCK_REALTIME, &clock);
  clock.tv_sec += 5;
  clock.tv_nsec = 900000000;
  TQuorinEvent event(false, false);
  Directed directed;
  directed.clock = &clock;
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_FALSE(event.Wait(100));
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(4));
}

TEST(QuorinEvent, SetAtTheEdgeOfTheTimeoutIsUsedUpByAnAutoResetEventOnly)
{
  for (const bool manual : {false, true}) {
    TQuorinEvent event(manual, false);
    Directed directed;
    directed.atTheEdgeOfTimeout = [&event] { event.Set(); };
    EXPECT_FALSE(event.Wait(1));
    directed.atTheEdgeOfTimeout = nullptr;
    EXPECT_EQ(event.Wait(0), manual);
  }
}

TEST(QuorinEvent, ReleasedThreadMayDestroyTheEvent)
{
  for (int i = 0; i < 500; ++i) {
    auto event = std::make_unique<TQuorinEvent>(false, false);
    std::thread setter([raw = event.get()] { raw->Set(); });
    EXPECT_TRUE(event->Wait(TQuorinEvent::Infinite));
    event.reset();
    setter.join();
  }
}

TEST(QuorinEvent, CancelledWaiterLeavesTheEventUsable)
{
  TQuorinEvent event(false, false);
  struct Cancelled
  {
    TQuorinEvent& event;
    std::atomic<pid_t> id{0};
  } cancelled{event};
  pthread_t thread{};
  const auto wait = [](void* context) -> void* {
    auto* self = static_cast<Cancelled*>(context);
    self->id = gettid();
    self->event.Wait(TQuorinEvent::Infinite);
    return nullptr;
  };
  ASSERT_EQ(pthread_create(&thread, nullptr, wait, &cancelled), 0);
  ASSERT_TRUE(Eventually([&] { return cancelled.id != 0; }) && EventuallyAsleep(cancelled.id));
  pthread_cancel(thread);
  void* result = nullptr;
  pthread_join(thread, &result);
  EXPECT_EQ(result, PTHREAD_CANCELED);

  Waiter waiter(event);
  event.Set();
  EXPECT_TRUE(Eventually([&] { return waiter.IsReleased(); }));
}
