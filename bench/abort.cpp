// SPDX-License-Identifier: MIT
// What it takes to end a run in the middle of an exposure, and to ask without waiting.
//
// The camera exposes without end, and a thread is blocked in VX_WaitBuffer: the acquisition thread, or a thread of the
// baseline, which does the same without the library: "AcquisitionStop", the return of that thread, VX_Flush. A cycle is
// a start, until the thread is blocked, and the end of the run.
//
// A time-out of 0 is compared with VX_WaitBuffer of time-out 0 on the same idle camera, GetStatus with a read of
// "CameraAcquiring".
#include "BenchmarkCamera.h"
#include "BenchmarkSetting.h"
#include "RegisterRounds.h"
#include "Rounds.h"
#include "vxcore_simulator.h"

#include <benchmark/benchmark.h>

#include <atomic>
#include <functional>
#include <sched.h>
#include <string>
#include <thread>

namespace {

constexpr int kCycleRounds = 201;
constexpr int kAskRounds = 51;
constexpr int kAsks = 20000;
constexpr unsigned int kSliceMs = 100;
const char* const kExposingCamera = "Source=manual\nScene=counter\n";

struct Times
{
  double cycle;
  double end;
};

void waitUntilBlocked()
{
  VXSIM_Statistics statistics{};
  do {
    sched_yield();
    VXSIM_GetStatistics(0, &statistics);
  } while (statistics.waitsBlocked == 0);
}

double now()
{
  return secondsOfClock(CLOCK_MONOTONIC);
}

/// Times from the start of a run, and of its end alone.
Times timesOf(const std::function<void()>& start, const std::function<void()>& end)
{
  const double begin = now();
  start();
  waitUntilBlocked();
  const double middle = now();
  end();
  const double finish = now();
  return {finish - begin, finish - middle};
}

Times bareCycle(const BenchmarkCamera& camera, BareCamera& bare)
{
  std::thread waiter;
  std::atomic<bool> ends{false};
  const Times times = timesOf(
      [&] {
        bare.queueAll();
        bare.start();
        // A wait that comes to its end by itself is followed by another.
        waiter = std::thread([&] {
          unsigned char* buffer = nullptr;
          int sizeBytes = 0;
          while (!ends) VX_WaitBuffer(camera.handle(), &buffer, &sizeBytes, kSliceMs);
        });
      },
      [&] {
        ends = true;
        VX_Command(camera.handle(), L"AcquisitionStop");
        waiter.join();
        VX_Flush(camera.handle());
      });
  return times;
}

void endRun(benchmark::State& state, int width, int height)
{
  BenchmarkCamera camera(width, height, kExposingCamera);
  BareCamera bare(camera);
  Rounds cycles;
  Rounds ends;
  const auto libraryCycle = [] {
    return timesOf([] { require(StartAcquisition() == RC_SUCCESS, "StartAcquisition"); },
                   [] { require(AbortAcquisition() == RC_SUCCESS, "AbortAcquisition"); });
  };
  libraryCycle(); // whose ring the next ones use again
  for (auto _ : state) {
    const Times without = bareCycle(camera, bare);
    const Times with = libraryCycle();
    cycles.add(without.cycle, with.cycle);
    ends.add(without.end, with.end);
    state.SetIterationTime(with.end);
  }
  state.counters["slots"] = static_cast<double>(camera.ringSlots());
  state.counters["camera_us"] = ends.baseline() * 1e6;
  state.counters["abort_us"] = ends.measured() * 1e6;
  state.counters["added_us"] = ends.difference() * 1e6;
  state.counters["camera_cycles_per_s"] = 1.0 / cycles.baseline();
  state.counters["cycles_per_s"] = 1.0 / cycles.measured();
  state.counters["ratio"] = cycles.ratio();
}

double secondsPerAsk(const std::function<void()>& ask)
{
  const double begin = now();
  for (int i = 0; i < kAsks; ++i) ask();
  return (now() - begin) / kAsks;
}

void askWithoutWaiting(benchmark::State& state, const std::function<void()>& ask,
                       const std::function<void(int handle)>& askCamera)
{
  BenchmarkCamera camera(16, 8, kExposingCamera);
  Rounds seconds;
  for (auto _ : state) {
    seconds.run([&] { return secondsPerAsk([&] { askCamera(camera.handle()); }); },
                [&] { return secondsPerAsk(ask); });
    state.SetIterationTime(seconds.lastMeasured());
  }
  state.counters["camera_ns"] = seconds.baseline() * 1e9;
  state.counters["library_ns"] = seconds.measured() * 1e9;
  state.counters["ratio"] = seconds.ratio();
}

} // namespace

int main(int argc, char** argv)
{
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  printBenchmarkSetting("16 bits; 2048x2048 (a ring of 35 slots) and 16x8 (5000 slots)");
  registerRounds("end_run/2048x2048", kCycleRounds, [](auto& state) { endRun(state, 2048, 2048); });
  registerRounds("end_run/16x8", kCycleRounds, [](auto& state) { endRun(state, 16, 8); });
  registerRounds("time_out_0/idle", kAskRounds, [](auto& state) {
    askWithoutWaiting(
        state, [] { benchmark::DoNotOptimize(WaitForAcquisitionTimeOut(0)); },
        [](int handle) {
          unsigned char* buffer = nullptr;
          int sizeBytes = 0;
          benchmark::DoNotOptimize(VX_WaitBuffer(handle, &buffer, &sizeBytes, 0));
        });
  });
  registerRounds("status/idle", kAskRounds, [](auto& state) {
    askWithoutWaiting(
        state,
        [] {
          int status = 0;
          benchmark::DoNotOptimize(GetStatus(&status));
        },
        [](int handle) {
          int acquiring = 0;
          benchmark::DoNotOptimize(VX_GetBool(handle, L"CameraAcquiring", &acquiring));
        });
  });
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
