// SPDX-License-Identifier: MIT
// What a frame costs on its path through the library, against a bare VX_WaitBuffer / VX_QueueBuffer loop on the
// same camera with the same slots; and tiny and small frames from the camera to the application.
//
// The path is measured through the exported interface: a run until abort, whose frames are counted over a stretch
// of time. The camera makes a frame inside VX_WaitBuffer, so both loops pay for it on their own thread. `cpu_*` is
// processor time of the loop's thread, `wall_*` time on the clock; `ratio` and `added` are medians over rounds
// that measure both in turns. On a loaded machine look at the processor time.
#include "BenchmarkCamera.h"
#include "BenchmarkSetting.h"
#include "Rounds.h"

#include <benchmark/benchmark.h>

#include <atomic>
#include <cstring>
#include <functional>
#include <memory>
#include <pthread.h>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace {

struct Geometry
{
  int width;
  int height;
  unsigned long pixels() const { return static_cast<unsigned long>(width) * static_cast<unsigned long>(height); }
};
constexpr Geometry kTiny{8, 4};
constexpr Geometry kSmall{128, 128};
constexpr int kRounds = 41;
constexpr int kSeries = 3;
constexpr auto kStretch = std::chrono::milliseconds(40);
constexpr long kBareFrames = 200'000;
constexpr int kWaitMs = 1000;

/// A thread that is blocked in WaitForAcquisition while no frame has come, as long as the object lives.
class Waiter
{
public:
  Waiter() : thread_([this] { wait(); }) {}
  ~Waiter()
  {
    ends_ = true;
    CancelWait();
    thread_.join();
  }
  Waiter(const Waiter&) = delete;
  Waiter& operator=(const Waiter&) = delete;

  double cpuSeconds()
  {
    clockid_t clock{};
    pthread_getcpuclockid(thread_.native_handle(), &clock);
    return secondsOfClock(clock);
  }
  long wakes() const { return wakes_; }

private:
  void wait()
  {
    while (!ends_)
      if (WaitForAcquisition() == RC_SUCCESS) ++wakes_;
  }

  std::atomic<bool> ends_{false};
  std::atomic<long> wakes_{0};
  std::thread thread_;
};

struct Cost
{
  double cpuNs;
  double wallNs;
};

Cost bareCost(BareCamera& bare)
{
  bare.queueAll();
  bare.start();
  bare.loop(kBareFrames / 10);
  const double cpu = secondsOfClock(CLOCK_THREAD_CPUTIME_ID);
  const double wall = secondsOfClock(CLOCK_MONOTONIC);
  bare.loop(kBareFrames);
  const Cost cost{(secondsOfClock(CLOCK_THREAD_CPUTIME_ID) - cpu) * 1e9 / kBareFrames,
                  (secondsOfClock(CLOCK_MONOTONIC) - wall) * 1e9 / kBareFrames};
  bare.stop();
  return cost;
}

/// @p wakesPerFrame gets how often the waiter, if there is one, was woken.
Cost pathCost(BenchmarkCamera& camera, bool withWaiter, double& wakesPerFrame)
{
  camera.startUntilAborted();
  std::unique_ptr<Waiter> waiter;
  if (withWaiter) waiter = std::make_unique<Waiter>();
  std::this_thread::sleep_for(kStretch / 10); // the first pass through the ring is over

  // All processor time that is neither the waiter's nor this thread's is the acquisition thread's.
  const auto cpuSeconds = [&waiter] {
    return secondsOfClock(CLOCK_PROCESS_CPUTIME_ID) - secondsOfClock(CLOCK_THREAD_CPUTIME_ID) -
           (waiter ? waiter->cpuSeconds() : 0.0);
  };
  const long wakes = waiter ? waiter->wakes() : 0;
  const double cpu = cpuSeconds();
  const double wall = secondsOfClock(CLOCK_MONOTONIC);
  const long frames = camera.framesSoFar();
  std::this_thread::sleep_for(kStretch);
  const double cpuSpent = cpuSeconds() - cpu;
  const double wallSpent = secondsOfClock(CLOCK_MONOTONIC) - wall;
  const auto counted = static_cast<double>(camera.framesSoFar() - frames);
  if (waiter) wakesPerFrame = static_cast<double>(waiter->wakes() - wakes) / counted;
  waiter.reset();
  require(AbortAcquisition() == RC_SUCCESS, "AbortAcquisition");
  return {cpuSpent * 1e9 / counted, wallSpent * 1e9 / counted};
}

void framePath(benchmark::State& state, bool withMetadata, bool withWaiter)
{
  BenchmarkCamera camera(kTiny.width, kTiny.height);
  require(SetMetaData(withMetadata ? 1 : 0) == RC_SUCCESS, "SetMetaData");
  BareCamera bare(camera);
  Rounds cpu;
  Rounds wall;
  std::vector<double> wakes;
  for (auto _ : state) {
    Cost bareOnce{};
    Cost pathOnce{};
    double wakesPerFrame = 0;
    cpu.run(
        [&] {
          bareOnce = bareCost(bare);
          return bareOnce.cpuNs;
        },
        [&] {
          pathOnce = pathCost(camera, withWaiter, wakesPerFrame);
          return pathOnce.cpuNs;
        });
    wall.add(bareOnce.wallNs, pathOnce.wallNs);
    wakes.push_back(wakesPerFrame);
    state.SetIterationTime(pathOnce.wallNs * 1e-9);
  }
  state.counters["cpu_bare_ns"] = cpu.baseline();
  state.counters["cpu_path_ns"] = cpu.measured();
  state.counters["cpu_added_ns"] = cpu.difference();
  state.counters["cpu_ratio"] = cpu.ratio();
  state.counters["wall_bare_ns"] = wall.baseline();
  state.counters["wall_path_ns"] = wall.measured();
  state.counters["wall_added_ns"] = wall.difference();
  state.counters["wall_ratio"] = wall.ratio();
  if (withWaiter) state.counters["wakes_per_frame"] = median(wakes);
}

/// The shortest that taking and copying out can be: everything on one thread.
double bareFrameRate(BenchmarkCamera& camera, BareCamera& bare, long frames)
{
  std::vector<unsigned char> output(camera.frameBytes());
  camera.setUntilAborted();
  bare.queueAll();
  bare.start();
  const double begin = secondsOfClock(CLOCK_MONOTONIC);
  bare.loop(frames, [&output](const unsigned char* buffer, int sizeBytes) {
    std::memcpy(output.data(), buffer, static_cast<std::size_t>(sizeBytes));
    benchmark::ClobberMemory();
  });
  const double seconds = secondsOfClock(CLOCK_MONOTONIC) - begin;
  bare.stop();
  return static_cast<double>(frames) / seconds;
}

/// A series whose every image the application takes: frames a second from the start to the last one.
double seriesFrameRate(unsigned long size, int frames)
{
  std::vector<unsigned short> pixels(size);
  require(SetAcquisitionMode(kSeries) == RC_SUCCESS, "SetAcquisitionMode");
  require(SetNumberKinetics(frames) == RC_SUCCESS, "SetNumberKinetics");
  require(StartAcquisition() == RC_SUCCESS, "StartAcquisition");
  const double begin = secondsOfClock(CLOCK_MONOTONIC);
  for (int taken = 0; taken < frames;) {
    if (GetOldestImage16(pixels.data(), size) == RC_SUCCESS)
      ++taken;
    else
      require(WaitForAcquisitionTimeOut(kWaitMs) == RC_SUCCESS, "every frame of a series arrives");
  }
  return frames / (secondsOfClock(CLOCK_MONOTONIC) - begin);
}

/// Frames a second of an application that waits for each and takes the oldest there is, while the camera runs.
double continuousFrameRate(BenchmarkCamera& camera, unsigned long size, int frames)
{
  std::vector<unsigned short> pixels(size);
  camera.startUntilAborted();
  const double begin = secondsOfClock(CLOCK_MONOTONIC);
  for (int taken = 0; taken < frames; ++taken) {
    require(WaitForAcquisitionTimeOut(kWaitMs) == RC_SUCCESS, "WaitForAcquisition");
    require(GetOldestImage16(pixels.data(), size) == RC_SUCCESS, "GetOldestImage16");
  }
  const double seconds = secondsOfClock(CLOCK_MONOTONIC) - begin;
  require(AbortAcquisition() == RC_SUCCESS, "AbortAcquisition");
  return frames / seconds;
}

void endToEnd(benchmark::State& state, Geometry geometry, bool series)
{
  // A series keeps all its frames: those of the larger geometry take 160 MB.
  const int frames = geometry.width == kTiny.width ? 20'000 : 5'000;
  const unsigned long size = geometry.pixels();
  BenchmarkCamera camera(geometry.width, geometry.height);
  BareCamera bare(camera);
  Rounds rates;
  for (auto _ : state) {
    rates.run([&] { return bareFrameRate(camera, bare, frames); },
              [&] { return series ? seriesFrameRate(size, frames) : continuousFrameRate(camera, size, frames); });
    state.SetIterationTime(1 / rates.lastMeasured());
  }
  state.counters["bare_per_s"] = rates.baseline();
  state.counters["taken_per_s"] = rates.measured();
  state.counters["ratio"] = rates.ratio();
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
  printBenchmarkSetting("8x4 and 128x128 pixels of 16 bits with a stamp, 5000 slots");
  registerRounds("path/no_waiter", [](auto& state) { framePath(state, false, false); });
  registerRounds("path/metadata/no_waiter", [](auto& state) { framePath(state, true, false); });
  registerRounds("path/one_waiter", [](auto& state) { framePath(state, false, true); });
  registerRounds("path/metadata/one_waiter", [](auto& state) { framePath(state, true, true); });
  for (const auto& [name, geometry] : {std::pair{"8x4", kTiny}, std::pair{"128x128", kSmall}}) {
    registerRounds(std::string("end_to_end/series/") + name, [=, g = geometry](auto& s) { endToEnd(s, g, true); });
    registerRounds(std::string("end_to_end/until_aborted/") + name,
                   [=, g = geometry](auto& s) { endToEnd(s, g, false); });
  }
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
