// SPDX-License-Identifier: MIT
// How fast the simulated camera makes frames, on one core and without the library, against memcpy of as many bytes. No
// benchmark of the library should be about the camera.
#include "BenchmarkCamera.h"
#include "BenchmarkSetting.h"
#include "RegisterRounds.h"
#include "Rounds.h"

#include <benchmark/benchmark.h>

#include <cstring>
#include <string>
#include <vector>

namespace {

constexpr int kRounds = 21;
constexpr std::size_t kBytesPerRound = 300'000'000;

void makeFrames(benchmark::State& state, int width, const std::string& keys)
{
  BenchmarkCamera camera(width, width, "Clock=free\n" + keys);
  BareCamera bare(camera);
  const std::size_t frameBytes = camera.frameBytes();
  const auto frames = static_cast<long>(kBytesPerRound / frameBytes);
  std::vector<unsigned char> from(frameBytes * camera.ringSlots(), 1);
  std::vector<unsigned char> to(frameBytes * camera.ringSlots(), 1);
  const auto gigabytesPerSecond = [&](auto&& make) {
    const double begin = secondsOfClock(CLOCK_PROCESS_CPUTIME_ID);
    make();
    const double seconds = secondsOfClock(CLOCK_PROCESS_CPUTIME_ID) - begin;
    return static_cast<double>(frames) * static_cast<double>(frameBytes) * 1e-9 / seconds;
  };
  bare.queueAll();
  bare.start();
  bare.loop(static_cast<long>(camera.ringSlots())); // every page of the ring is there
  Rounds rounds;
  for (auto _ : state) {
    rounds.run(
        [&] {
          return gigabytesPerSecond([&] {
            for (long i = 0; i < frames; ++i) {
              const std::size_t place = static_cast<std::size_t>(i) % camera.ringSlots() * frameBytes;
              std::memcpy(to.data() + place, from.data() + place, frameBytes);
              benchmark::ClobberMemory();
            }
          });
        },
        [&] { return gigabytesPerSecond([&] { bare.loop(frames); }); });
    state.SetIterationTime(static_cast<double>(kBytesPerRound) * 1e-9 / rounds.lastMeasured());
  }
  bare.stop();
  state.counters["memcpy_GBps"] = rounds.baseline();
  state.counters["frames_GBps"] = rounds.measured();
  state.counters["ratio"] = rounds.ratio();
}

} // namespace

int main(int argc, char** argv)
{
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  printBenchmarkSetting("16 bits; 2048x2048 and 128x128");
  const struct
  {
    const char* name;
    const char* keys;
  } scenes[] = {
      {"counter", "Scene=counter\n"}, {"stamp", "Scene=stamp\n"}, {"noise", "Scene=gradient\nNoise=on\n"}};
  for (const auto& scene : scenes)
    for (const int width : {128, 2048})
      registerRounds(
          std::string(scene.name) + "/" + std::to_string(width), kRounds,
          [=](auto& state) { makeFrames(state, width, scene.keys); }, benchmark::kMillisecond);
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
