// SPDX-License-Identifier: MIT
// What happens per frame once a run is under way that should not: heap allocations, file operations, log lines.
//
// Every count has to be 0; the program fails otherwise. What the simulated camera allocates during calls of the
// feature library is shown but is not the library's.
#include "BenchmarkCamera.h"
#include "BenchmarkSetting.h"
#include "CountedCalls.h"

#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdlib>
#include <functional>
#include <thread>

namespace {

constexpr int kWidth = 8;
constexpr int kHeight = 4;
constexpr int kWaitMs = 5000;
constexpr long kRoadFrames = 1'000'000;
constexpr long kTakenFrames = 20'000;

bool isClean = true;

void waitForFrames(const BenchmarkCamera& camera, long count)
{
  const long last = camera.framesSoFar() + count;
  while (camera.framesSoFar() < last)
    std::this_thread::sleep_for(std::chrono::milliseconds(1)); // between two polls
}

/// Counts while @p action goes on, which returns the number of frames it has seen.
void count(benchmark::State& state, bool withMetadata, const std::function<long(const BenchmarkCamera&)>& action)
{
  BenchmarkCamera camera(kWidth, kHeight);
  require(SetMetaData(withMetadata ? 1 : 0) == RC_SUCCESS, "SetMetaData");
  camera.startUntilAborted();
  waitForFrames(camera, 2 * static_cast<long>(camera.ringSlots()));
  action(camera); // everything has been called once
  CountedCalls counted;
  long frames = 0;
  for (auto _ : state) {
    const CountedCalls before = CountedCalls::now();
    frames = action(camera);
    counted = CountedCalls::now().since(before);
  }
  require(AbortAcquisition() == RC_SUCCESS, "AbortAcquisition");
  state.counters["frames"] = static_cast<double>(frames);
  state.counters["allocations"] = static_cast<double>(counted.allocations);
  state.counters["opens"] = static_cast<double>(counted.opens);
  state.counters["reads_and_writes"] = static_cast<double>(counted.readsAndWrites);
  state.counters["log_bytes"] = static_cast<double>(counted.logBytes);
  state.counters["camera_allocations_per_frame"] =
      static_cast<double>(counted.cameraAllocations) / static_cast<double>(frames);
  isClean = isClean && counted.allocations == 0 && counted.opens == 0 && counted.readsAndWrites == 0 &&
            counted.logBytes == 0;
}

long letRun(const BenchmarkCamera& camera)
{
  waitForFrames(camera, kRoadFrames);
  return kRoadFrames;
}

/// What an application does for each image.
long takeImages(const BenchmarkCamera&)
{
  unsigned short pixels[kWidth * kHeight];
  int first = 0;
  int last = 0;
  int status = 0;
  for (long taken = 0; taken < kTakenFrames; ++taken) {
    require(WaitForAcquisitionTimeOut(kWaitMs) == RC_SUCCESS, "WaitForAcquisition");
    require(GetStatus(&status) == RC_SUCCESS, "GetStatus");
    require(GetNumberAvailableImages(&first, &last) == RC_SUCCESS, "GetNumberAvailableImages");
    require(GetOldestImage16(pixels, kWidth * kHeight) == RC_SUCCESS, "GetOldestImage16");
    require(GetMostRecentImage16(pixels, kWidth * kHeight) == RC_SUCCESS, "GetMostRecentImage16");
  }
  return kTakenFrames;
}

} // namespace

int main(int argc, char** argv)
{
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  printBenchmarkSetting("8x4 pixels of 16 bits with a stamp, 5000 slots");
  CountedCalls::begin();
  for (const bool withMetadata : {false, true}) {
    const std::string name = withMetadata ? "path/metadata" : "path";
    benchmark::RegisterBenchmark(name.c_str(), [=](auto& state) {
      count(state, withMetadata, letRun);
    })->Iterations(1);
  }
  benchmark::RegisterBenchmark("taking_images", [](auto& state) {
    count(state, true, takeImages);
  })->Iterations(1);
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  if (!isClean) std::fprintf(stderr, "benchmark: a frame must not allocate, work with files or log\n");
  return isClean ? EXIT_SUCCESS : EXIT_FAILURE;
}
