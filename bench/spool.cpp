// SPDX-License-Identifier: MIT
// Writing runs to the disk: the library against plain writes of the same bytes and against the libraries of other
// formats, and the library's parts against each other.
//
// `*_disk_GBps` is what everything took until the bytes were on the disk, with the last fdatasync(); `*_accepted_GBps`
// until the last frame was accepted, when the rest may still be in the page cache or in memory.
// `*_cpu_s_per_GB` is processor time of this process, without what the kernel's own threads do for the page cache.
// `x_*` says how many times faster the first is than the others. Disks change their speed from minute to minute, so
// only what is measured within a round is compared.
//
// Environment: VXMCD_BENCHMARK_DIRECTORY, where to write (the working directory); VXMCD_BENCHMARK_MIB, how much each
// writes (2048, less when the disk has no room for four times of it); VXMCD_BENCHMARK_SECONDS, how long the
// camera of the benchmarks "fixed_rate" runs (10).
#include "BenchmarkCamera.h"
#include "BenchmarkDirectory.h"
#include "BenchmarkSetting.h"
#include "FilledSlots.h"
#include "FrameWriters.h"
#include "Rounds.h"
#include "runs/checksum.h"
#include "SpoolParts.h"
#include "SpoolRun.h"
#include "WriterComparison.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace {

constexpr int kRounds = 9;
constexpr int kImagePerFile = TSpoolLayout::kImagePerFile;
constexpr int kImagesTogether = TSpoolLayout::kImagesTogether;
constexpr std::size_t kSourceBytes = 300'000'000; // as the ring
constexpr std::size_t kMaxSourceFrames = 5000;
constexpr std::size_t kChunkedAbove = std::size_t{256} << 10; // smaller frames are written in one piece anyway

struct Geometry
{
  const char* name;
  int width;
  int height;
  std::size_t frameBytes() const { return std::size_t{2} * static_cast<std::size_t>(width * height); }
};
constexpr Geometry kLarge{"8_MiB", 2048, 2048};
constexpr Geometry kSmall{"32_KiB", 128, 128};

double fromEnvironment(const char* name, double otherwise)
{
  const char* const text = std::getenv(name);
  const double value = text ? std::atof(text) : otherwise;
  require(value > 0, name);
  return value;
}

/// How many frames make up what everybody writes.
long frameCount(std::size_t frameBytes)
{
  const double wanted = fromEnvironment("VXMCD_BENCHMARK_MIB", 2048) * 1048576;
  const double bytes = std::min(wanted, static_cast<double>(BenchmarkDirectory::get().freeBytes()) / 4);
  return std::max(1L, static_cast<long>(bytes / static_cast<double>(frameBytes)));
}

double bytesOf(long count, std::size_t frameBytes)
{
  return static_cast<double>(count) * static_cast<double>(frameBytes);
}

FrameSource makeSource(std::size_t frameBytes)
{
  return FrameSource(frameBytes, std::min(kSourceBytes / frameBytes, kMaxSourceFrames));
}

void runRounds(benchmark::State& state, WriterComparison& comparison)
{
  for (auto _ : state) state.SetIterationTime(comparison.round());
  comparison.report(state);
}

/// The whole library against others. With metadata, frames are no multiple of a page.
void againstOthers(benchmark::State& state, Geometry geometry, bool withMetadata)
{
  BenchmarkCamera camera(geometry.width, geometry.height);
  require(SetMetaData(withMetadata ? 1 : 0) == RC_SUCCESS, "SetMetaData");
  const std::size_t frameBytes = camera.frameBytes();
  const FrameSource frames(frameBytes, camera.ringSlots());
  const long count = frameCount(frameBytes);
  const std::string& directory = BenchmarkDirectory::get().path();

  std::vector<FrameWriter> others{{"pwrite", writeBuffered}};
  if (frameBytes > kChunkedAbove) others.push_back({"chunks", writeInChunks});
  if (geometry.width == kLarge.width) { // small slots do not begin at pages
    if (canWriteDirectly(directory)) others.push_back({"direct", writeDirectly});
    if (!withMetadata)
      for (const FrameWriter& writer : formatWriters()) others.push_back(writer);
  }

  WriterComparison comparison(bytesOf(count, frameBytes));
  comparison.add("spool",
                 [&](const std::string& path) { return spoolSeries(camera, path, kImagesTogether, count); });
  for (const FrameWriter& other : others)
    comparison.add(other.name, [&, other](const std::string& path) { return other.write(path, frames, count); });
  spoolSeries(camera, directory, kImagesTogether, static_cast<long>(camera.ringSlots())); // fills the slots
  runRounds(state, comparison);
}

/// The two methods of SetSpool(), each with the layout that the library chooses for it.
void methods(benchmark::State& state)
{
  BenchmarkCamera camera(kLarge.width, kLarge.height);
  require(SetMetaData(0) == RC_SUCCESS, "SetMetaData");
  const long count = frameCount(camera.frameBytes());
  WriterComparison comparison(bytesOf(count, camera.frameBytes()));
  for (const auto& [name, method] : {std::pair{"method_3", kImagesTogether}, std::pair{"method_1", kImagePerFile}})
    comparison.add(name, [&, m = method](const std::string& path) { return spoolSeries(camera, path, m, count); });
  spoolSeries(camera, BenchmarkDirectory::get().path(), kImagesTogether, static_cast<long>(camera.ringSlots()));
  runRounds(state, comparison);
}

/// A combination of the library's parts.
struct Variant
{
  const char* name;
  bool queued;
  bool direct;
  bool filePerImage = false;
  std::uint32_t placeBytes = 0; // 0: as the library chooses
};

void variants(benchmark::State& state, Geometry geometry, const std::vector<Variant>& all)
{
  const FrameSource frames = makeSource(geometry.frameBytes());
  const long count = frameCount(geometry.frameBytes());
  const TSpoolVolume able = TSpoolVolume::Probe(BenchmarkDirectory::get().path());
  WriterComparison comparison(bytesOf(count, geometry.frameBytes()));
  for (const Variant& variant : all) {
    TSpoolVolume volume = able;
    volume.writesDirectly = able.writesDirectly && variant.direct;
    TSpoolLayout layout = TSpoolLayout::Choose(variant.filePerImage ? kImagePerFile : kImagesTogether,
                                               geometry.frameBytes(), static_cast<std::uint32_t>(count));
    if (variant.placeBytes > 0) {
      layout.placesPerFile = layout.ImagesPerFile();
      layout.imagesPerPlace = variant.placeBytes / static_cast<std::uint32_t>(geometry.frameBytes());
      layout.placesPerFile /= layout.imagesPerPlace;
    }
    layout.isQueued = variant.queued;
    comparison.add(variant.name, [&frames, layout, volume, count](const std::string& path) {
      return writeThroughParts(path, layout, volume, frames, count);
    });
  }
  runRounds(state, comparison);
}

/// The checksum of frames that come from memory, against copying them.
void checksum(benchmark::State& state, Geometry geometry)
{
  const FrameSource frames = makeSource(geometry.frameBytes());
  const auto count = static_cast<long>(kSourceBytes / geometry.frameBytes());
  std::vector<unsigned char> copy(geometry.frameBytes());
  std::uint64_t sum = 0;
  const auto cpuSecondsPerGB = [&](auto&& use) {
    const double begin = secondsOfClock(CLOCK_THREAD_CPUTIME_ID);
    for (long i = 0; i < count; ++i) use(frames.frame(i));
    return (secondsOfClock(CLOCK_THREAD_CPUTIME_ID) - begin) / (bytesOf(count, geometry.frameBytes()) * 1e-9);
  };
  Rounds costs;
  for (auto _ : state) {
    costs.run(
        [&] {
          return cpuSecondsPerGB([&](const unsigned char* frame) {
            std::memcpy(copy.data(), frame, copy.size());
            benchmark::ClobberMemory();
          });
        },
        [&] {
          return cpuSecondsPerGB(
              [&](const unsigned char* frame) { sum += Checksum(frame, geometry.frameBytes()); });
        });
    state.SetIterationTime(costs.lastMeasured());
  }
  benchmark::DoNotOptimize(sum);
  state.counters["memcpy_cpu_s_per_GB"] = costs.baseline();
  state.counters["checksum_cpu_s_per_GB"] = costs.measured();
  state.counters["ratio"] = costs.ratio();
}

/// What a camera loses that runs at part of the rate that the library has just shown.
void fixedRate(benchmark::State& state, double part)
{
  const BenchmarkDirectory& directory = BenchmarkDirectory::get();
  const double seconds = fromEnvironment("VXMCD_BENCHMARK_SECONDS", 10);
  for (auto _ : state) {
    double rate = 0;
    {
      BenchmarkCamera camera(kLarge.width, kLarge.height);
      const long count = frameCount(camera.frameBytes());
      std::vector<double> rates;
      for (int round = 0; round < 3; ++round) {
        directory.clear();
        const double taken = spoolSeries(camera, directory.path(), kImagesTogether, count).diskSeconds;
        rates.push_back(static_cast<double>(count) / taken);
      }
      rate = part * median(rates);
    }
    directory.clear();
    BenchmarkCamera camera(kLarge.width, kLarge.height, "Source=manual\nScene=stamp\n");
    const auto count = static_cast<long>(rate * seconds);
    const double frameGB = static_cast<double>(camera.frameBytes()) * 1e-9;
    const FixedRateResult result = spoolAtRate(camera, directory.path(), count, rate);
    directory.clear();
    state.SetIterationTime(result.seconds);
    state.counters["camera_GBps"] = rate * frameGB;
    state.counters["frames"] = static_cast<double>(count);
    state.counters["overflowed"] = static_cast<double>(result.overflowed);
    state.counters["not_written"] = static_cast<double>(count - result.written);
    state.counters["max_waiting"] = static_cast<double>(result.maxWaiting);
    state.counters["cpu_s_per_GB"] = result.cpuSeconds / (static_cast<double>(result.frames) * frameGB);
  }
}

void registerRounds(const std::string& name, int rounds, const std::function<void(benchmark::State&)>& body)
{
  benchmark::RegisterBenchmark(name.c_str(), body)
      ->UseManualTime()
      ->Iterations(rounds)
      ->Unit(benchmark::kMillisecond);
}

const std::vector<Variant> kLargeVariants{
    {"threaded_direct", false, true},
    {"threaded_buffered", false, false},
    {"queued_direct", true, true},
    {"threaded_direct_file_each", false, true, true},
    {"queued_direct_file_each", true, true, true},
};
const std::vector<Variant> kSmallVariants{
    {"threaded_direct", false, true},
    {"threaded_buffered", false, false},
    {"threaded_direct_1_MiB", false, true, false, 1 << 20},
    {"threaded_direct_one_by_one", false, true, false, 32 << 10},
};

} // namespace

int main(int argc, char** argv)
{
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  printBenchmarkSetting("16 bits; 2048x2048 (8 MiB) and 128x128 (32 KiB), noise");
  BenchmarkDirectory::get();
  for (const bool withMetadata : {false, true})
    registerRounds(std::string("against_others/8_MiB") + (withMetadata ? "/metadata" : ""), kRounds,
                   [=](auto& state) { againstOthers(state, kLarge, withMetadata); });
  registerRounds("against_others/32_KiB", kRounds, [](auto& state) { againstOthers(state, kSmall, false); });
  registerRounds("methods/8_MiB", kRounds, methods);
  registerRounds("parts/8_MiB", kRounds, [](auto& state) { variants(state, kLarge, kLargeVariants); });
  registerRounds("parts/32_KiB", kRounds, [](auto& state) { variants(state, kSmall, kSmallVariants); });
  for (const Geometry& geometry : {kLarge, kSmall})
    registerRounds(std::string("checksum/") + geometry.name, kRounds,
                   [=](auto& state) { checksum(state, geometry); });
  for (const int percent : {50, 90})
    registerRounds("fixed_rate/" + std::to_string(percent) + "_percent", 1,
                   [=](auto& state) { fixedRate(state, percent / 100.0); });
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
