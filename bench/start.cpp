// SPDX-License-Identifier: MIT
// What StartAcquisition costs above the camera's own start, and what the first pass through a ring costs above the
// second.
//
// The camera's own start is queueing as many buffers of the same shape and "AcquisitionStart". A first start finds
// no ring and makes one, a repeated one has the geometry of the run before. StartAcquisition returns when the
// acquisition thread has begun the run, so each includes the time the system takes to wake that thread; how long a
// bare hand-over to a sleeping thread and back takes is measured beside it (`hand_over_us`).
//
// In a pass the camera fills every slot once with a counter pattern, at the speed of the memory. `huge_pages` compares
// rings of the same run with and without huge pages, which the system can be asked not to give to the process.
#include "BenchmarkCamera.h"
#include "BenchmarkSetting.h"
#include "RegisterRounds.h"
#include "Rounds.h"
#include "vxcore_simulator.h"

#include <benchmark/benchmark.h>

#include <condition_variable>
#include <functional>
#include <mutex>
#include <sched.h>
#include <string>
#include <sys/prctl.h>
#include <thread>
#include <vector>

namespace {

constexpr int kStartRounds = 101;
constexpr int kPassRounds = 21;
const char* const kQuietCamera = "Source=manual\nScene=counter\n";

struct Geometry
{
  const char* name;
  int width;
  int height;
};
constexpr Geometry kLarge{"2048x2048", 2048, 2048};
constexpr Geometry kSmall{"128x64", 128, 64};
constexpr Geometry kTiny{"8x4", 8, 4};

double secondsOf(const std::function<void()>& action)
{
  const double begin = secondsOfClock(CLOCK_MONOTONIC);
  action();
  return secondsOfClock(CLOCK_MONOTONIC) - begin;
}

/// A sleeping thread that answers at once when it is called.
class Sleeper
{
public:
  Sleeper() : thread_([this] { answer(); }) {}
  ~Sleeper()
  {
    {
      const std::lock_guard lock(mutex_);
      ends_ = true;
    }
    changed_.notify_all();
    thread_.join();
  }
  Sleeper(const Sleeper&) = delete;
  Sleeper& operator=(const Sleeper&) = delete;

  void call()
  {
    std::unique_lock lock(mutex_);
    called_ = true;
    changed_.notify_all();
    changed_.wait(lock, [this] { return !called_; });
  }

private:
  void answer()
  {
    std::unique_lock lock(mutex_);
    for (;;) {
      changed_.wait(lock, [this] { return called_ || ends_; });
      if (ends_) return;
      called_ = false;
      changed_.notify_all();
    }
  }

  std::mutex mutex_;
  std::condition_variable changed_;
  bool called_ = false;
  bool ends_ = false;
  std::thread thread_;
};

void startRun(benchmark::State& state, Geometry geometry, bool repeated)
{
  BenchmarkCamera camera(geometry.width, geometry.height, kQuietCamera);
  BareCamera bare(camera);
  Sleeper sleeper;
  Rounds seconds;
  std::vector<double> handOvers;
  require(StartAcquisition() == RC_SUCCESS, "StartAcquisition");
  require(AbortAcquisition() == RC_SUCCESS, "AbortAcquisition");
  const auto bareStart = [&] {
    const double time = secondsOf([&] {
      bare.queueAll();
      bare.start();
    });
    bare.stop();
    return time;
  };
  const auto libraryStart = [&] {
    if (!repeated) FreeInternalMemory();
    const double time = secondsOf([] { require(StartAcquisition() == RC_SUCCESS, "StartAcquisition"); });
    require(AbortAcquisition() == RC_SUCCESS, "AbortAcquisition");
    return time;
  };
  for (auto _ : state) {
    seconds.run(bareStart, libraryStart);
    handOvers.push_back(secondsOf([&] { sleeper.call(); }));
    state.SetIterationTime(seconds.lastMeasured());
  }
  state.counters["slots"] = static_cast<double>(camera.ringSlots());
  state.counters["camera_us"] = seconds.baseline() * 1e6;
  state.counters["start_us"] = seconds.measured() * 1e6;
  state.counters["added_us"] = seconds.difference() * 1e6;
  state.counters["hand_over_us"] = median(handOvers) * 1e6;
}

/// Seconds in which the camera fills every slot once. All slots lie with the camera before and after.
double passSeconds(const BenchmarkCamera& camera)
{
  const auto slots = camera.ringSlots();
  const double seconds = secondsOf(
      [slots] { require(VXSIM_PushFrames(0, static_cast<int>(slots)) == VX_SUCCESS, "VXSIM_PushFrames"); });
  VXSIM_Statistics statistics{};
  do {
    sched_yield();
    VXSIM_GetStatistics(0, &statistics);
  } while (statistics.buffersQueued < slots || statistics.framesDelivered != statistics.framesProduced ||
           statistics.buffersHeld != slots);
  return seconds;
}

void firstPass(benchmark::State& state, Geometry geometry, bool kept)
{
  BenchmarkCamera camera(geometry.width, geometry.height, kQuietCamera);
  Rounds passes;
  const auto run = [&] {
    if (!kept) FreeInternalMemory();
    require(StartAcquisition() == RC_SUCCESS, "StartAcquisition");
    const double first = passSeconds(camera);
    const double second = passSeconds(camera);
    require(AbortAcquisition() == RC_SUCCESS, "AbortAcquisition");
    passes.add(second, first);
    return first;
  };
  if (kept) {
    run();
    passes = Rounds();
  }
  for (auto _ : state) state.SetIterationTime(run());
  state.counters["ring_MB"] = static_cast<double>(camera.ringSlots() * camera.frameBytes()) * 1e-6;
  state.counters["first_ms"] = passes.measured() * 1e3;
  state.counters["second_ms"] = passes.baseline() * 1e3;
  state.counters["ratio"] = passes.ratio();
}

/// Whether the process may get huge pages.
void allowHugePages(bool allowed)
{
  require(prctl(PR_SET_THP_DISABLE, allowed ? 0 : 1, 0, 0, 0) == 0, "prctl");
}

/// The first pass through a new ring in huge pages, against one in pages of 4 KiB.
void hugePages(benchmark::State& state, Geometry geometry)
{
  BenchmarkCamera camera(geometry.width, geometry.height, kQuietCamera);
  Rounds passes;
  Rounds frees;
  const auto run = [&](bool huge, double& pass, double& free) {
    allowHugePages(huge);
    require(StartAcquisition() == RC_SUCCESS, "StartAcquisition");
    pass = passSeconds(camera);
    require(AbortAcquisition() == RC_SUCCESS, "AbortAcquisition");
    free = secondsOf([] { FreeInternalMemory(); });
    allowHugePages(true);
  };
  double smallPass = 0;
  double smallFree = 0;
  double hugePass = 0;
  double hugeFree = 0;
  for (auto _ : state) {
    run(false, smallPass, smallFree);
    run(true, hugePass, hugeFree);
    passes.add(smallPass, hugePass);
    frees.add(smallFree, hugeFree);
    state.SetIterationTime(hugePass);
  }
  const double ringBytes = static_cast<double>(camera.ringSlots() * camera.frameBytes());
  state.counters["ring_MB"] = ringBytes * 1e-6;
  state.counters["huge_GBps"] = ringBytes * 1e-9 / passes.measured();
  state.counters["small_GBps"] = ringBytes * 1e-9 / passes.baseline();
  state.counters["ratio"] = passes.ratio();
  state.counters["free_huge_ms"] = frees.measured() * 1e3;
  state.counters["free_small_ms"] = frees.baseline() * 1e3;
}

} // namespace

int main(int argc, char** argv)
{
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  printBenchmarkSetting("16 bits; 2048x2048 (a ring of 300 MB), 128x64 (80 MB) and 8x4 (5000 slots)");
  for (const Geometry& geometry : {kLarge, kTiny}) {
    for (const bool repeated : {false, true}) {
      registerRounds(std::string("start/") + geometry.name + (repeated ? "/repeated" : "/first"), kStartRounds,
                     [=](auto& state) { startRun(state, geometry, repeated); });
    }
  }
  for (const Geometry& geometry : {kLarge, kSmall}) {
    for (const bool kept : {false, true}) {
      registerRounds(std::string("first_pass/") + geometry.name + (kept ? "/kept_ring" : "/new_ring"), kPassRounds,
                     [=](auto& state) { firstPass(state, geometry, kept); });
    }
  }
  for (const Geometry& geometry : {kLarge, kSmall})
    registerRounds(std::string("huge_pages/") + geometry.name, kPassRounds,
                   [=](auto& state) { hugePages(state, geometry); });
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
