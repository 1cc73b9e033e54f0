// SPDX-License-Identifier: MIT
// How long it takes from setting an event to the waiter running, one way, against a bare futex word and against a
// mutex with a condition variable that is signalled under the mutex.
//
// Two threads, each on a separate core, pass a turn back and forth; one way is half a round. On idle cores both
// sleep between turns, so the figures contain what the machine takes to wake a core. On busy cores a thread of the
// lowest priority keeps each core awake, which leaves the cost of the primitive and of the scheduler.
#include "BenchmarkSetting.h"
#include "Rounds.h"
#include "utility/TQuorinEvent.h"

#include <benchmark/benchmark.h>

#include <atomic>
#include <climits>
#include <condition_variable>
#include <cstdlib>
#include <functional>
#include <linux/futex.h>
#include <memory>
#include <mutex>
#include <pthread.h>
#include <sched.h>
#include <string>
#include <sys/syscall.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

using QuorinUtility::TQuorinEvent;

constexpr int kRounds = 31;
constexpr int kTurns = 300;

class LibraryEvent
{
public:
  void set() { event_.Set(); }
  void wait() { event_.Wait(TQuorinEvent::Infinite); }

private:
  TQuorinEvent event_{false, false};
};

/// What the system offers, and nothing around it.
class FutexEvent
{
public:
  void set()
  {
    word_.store(1, std::memory_order_release);
    syscall(SYS_futex, &word_, FUTEX_WAKE_PRIVATE, INT_MAX, nullptr, nullptr, 0);
  }
  void wait()
  {
    while (word_.exchange(0, std::memory_order_acquire) == 0)
      syscall(SYS_futex, &word_, FUTEX_WAIT_PRIVATE, 0, nullptr, nullptr, 0);
  }

private:
  std::atomic<int> word_{0};
};

/// The textbook event.
class NaiveEvent
{
public:
  void set()
  {
    const std::lock_guard lock(mutex_);
    isSet_ = true;
    changed_.notify_all();
  }
  void wait()
  {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return isSet_; });
    isSet_ = false;
  }

private:
  std::mutex mutex_;
  std::condition_variable changed_;
  bool isSet_ = false;
};

void bindToCore(int core)
{
  cpu_set_t cores;
  CPU_ZERO(&cores);
  CPU_SET(static_cast<std::size_t>(core), &cores);
  pthread_setaffinity_np(pthread_self(), sizeof cores, &cores);
}

/// Keeps the cores of the two threads from going to sleep while it lives, and gives way to everything else.
class AwakeCores
{
public:
  AwakeCores()
  {
    for (const int core : {0, 1}) {
      threads_.emplace_back([this, core] {
        bindToCore(core);
        const sched_param priority{};
        pthread_setschedparam(pthread_self(), SCHED_IDLE, &priority);
        while (!ends_.load(std::memory_order_relaxed)) {
        }
      });
    }
  }
  ~AwakeCores()
  {
    ends_ = true;
    for (std::thread& thread : threads_) thread.join();
  }
  AwakeCores(const AwakeCores&) = delete;
  AwakeCores& operator=(const AwakeCores&) = delete;

private:
  std::atomic<bool> ends_{false};
  std::vector<std::thread> threads_;
};

template <class Event>
double oneWaySeconds()
{
  Event there;
  Event back;
  std::vector<double> turns;
  turns.reserve(kTurns);
  std::thread partner([&] {
    bindToCore(1);
    for (int turn = 0; turn < kTurns; ++turn) {
      there.wait();
      back.set();
    }
  });
  for (int turn = 0; turn < kTurns; ++turn) {
    const double begin = secondsOfClock(CLOCK_MONOTONIC);
    there.set();
    back.wait();
    turns.push_back((secondsOfClock(CLOCK_MONOTONIC) - begin) / 2);
  }
  partner.join();
  return median(turns);
}

template <class Baseline>
void setToRunning(benchmark::State& state, bool awake)
{
  std::unique_ptr<AwakeCores> awakeCores;
  if (awake) awakeCores = std::make_unique<AwakeCores>();
  Rounds seconds;
  for (auto _ : state) {
    seconds.run(oneWaySeconds<Baseline>, oneWaySeconds<LibraryEvent>);
    state.SetIterationTime(seconds.lastMeasured());
  }
  state.counters["baseline_us"] = seconds.baseline() * 1e6;
  state.counters["event_us"] = seconds.measured() * 1e6;
  state.counters["ratio"] = seconds.ratio();
}

/// What Set() costs when nobody waits.
template <class Baseline>
void setAlone(benchmark::State& state)
{
  constexpr int kSets = 100'000;
  std::thread([] {}).join(); // the C library takes short cuts until there has been a second thread
  const auto secondsOf = [](auto& event) {
    const double begin = secondsOfClock(CLOCK_THREAD_CPUTIME_ID);
    for (int i = 0; i < kSets; ++i) event.set();
    return (secondsOfClock(CLOCK_THREAD_CPUTIME_ID) - begin) / kSets;
  };
  Baseline baseline;
  LibraryEvent event;
  Rounds seconds;
  for (auto _ : state) {
    seconds.run([&] { return secondsOf(baseline); }, [&] { return secondsOf(event); });
    state.SetIterationTime(seconds.lastMeasured());
  }
  state.counters["baseline_ns"] = seconds.baseline() * 1e9;
  state.counters["event_ns"] = seconds.measured() * 1e9;
  state.counters["ratio"] = seconds.ratio();
}

void registerRounds(const std::string& name, const std::function<void(benchmark::State&)>& body)
{
  benchmark::RegisterBenchmark(name.c_str(), body)
      ->UseManualTime()
      ->Iterations(kRounds)
      ->Unit(benchmark::kNanosecond);
}

} // namespace

int main(int argc, char** argv)
{
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  printBenchmarkSetting("none");
  if (std::thread::hardware_concurrency() < 2) {
    std::fprintf(stderr, "benchmark: this needs two cores\n");
    return 1;
  }
  bindToCore(0);
  for (const bool awake : {false, true}) {
    const std::string cores = awake ? "busy_cores" : "idle_cores";
    registerRounds("set_to_running/" + cores + "/against_futex",
                   [=](auto& state) { setToRunning<FutexEvent>(state, awake); });
    registerRounds("set_to_running/" + cores + "/against_naive",
                   [=](auto& state) { setToRunning<NaiveEvent>(state, awake); });
  }
  registerRounds("set/nobody_waits/against_naive", [](auto& state) { setAlone<NaiveEvent>(state); });
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
