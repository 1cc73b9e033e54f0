// SPDX-License-Identifier: MIT
// Taking images through the exported functions: what a call costs, and how soon after its arrival an image is there.
//
// "call" times an exported function on the images of a finished run, against memcpy of the bytes that come out; what it
// takes more than the copy is asking the camera for encoding and geometry and finding the image. `ratio` is the median
// over rounds of memcpy time / call time. Small images stay in the cache, large ones rotate through the ring.
//
// "latency" is the time from the camera's having a frame until an application thread that was waiting for it has copied
// it out; the baseline is a thread that waits for the same camera's buffers and copies without the library.
#include "BenchmarkCamera.h"
#include "BenchmarkSetting.h"
#include "RegisterRounds.h"
#include "Rounds.h"
#include "vxcore_simulator.h"

#include <benchmark/benchmark.h>

#include <atomic>
#include <cstring>
#include <cwchar>
#include <functional>
#include <string>
#include <thread>
#include <vector>

namespace {

constexpr int kSeries = 3;
constexpr int kCallRounds = 101;
constexpr int kLatencyRounds = 301;
constexpr int kWaitMs = 5000;
constexpr int kSmallWidth = 128;
constexpr int kLargeWidth = 2048;

using TCall = unsigned int (*)(long image, unsigned short* pixels, unsigned long size);

unsigned int takeRange(long image, unsigned short* pixels, unsigned long size)
{
  long first = 0;
  long last = 0;
  return GetImages16(image, image, pixels, size, &first, &last);
}

unsigned int takeIntact(long image, unsigned short* pixels, unsigned long size)
{
  long long ticks = 0;
  return vxmcd_GetIntactImage16(image, pixels, size, &ticks);
}

void takeSeries(int images)
{
  require(SetAcquisitionMode(kSeries) == RC_SUCCESS, "SetAcquisitionMode");
  require(SetNumberKinetics(images) == RC_SUCCESS, "SetNumberKinetics");
  require(StartAcquisition() == RC_SUCCESS, "StartAcquisition");
  int status = RC_ACQUIRING;
  while (status == RC_ACQUIRING) {
    WaitForAcquisitionTimeOut(kWaitMs);
    GetStatus(&status);
  }
  require(status == RC_IDLE, "a series of images");
}

/// Each round takes as many images as there are, or so many times the first.
void call(benchmark::State& state, int width, const wchar_t* encoding, TCall take)
{
  const bool isLarge = width == kLargeWidth;
  const int images = isLarge ? 30 : 1;
  const int calls = isLarge ? images : 2000;
  BenchmarkCamera camera(width, width, "Clock=free\nScene=counter\n");
  // 12 bits come with one gain alone.
  require(std::wcscmp(encoding, L"Mono12Packed") != 0 || SetPreAmpGain(0) == RC_SUCCESS, "SetPreAmpGain");
  require(VX_SetEnumeratedString(camera.handle(), L"PixelEncoding", encoding) == VX_SUCCESS, "PixelEncoding");
  takeSeries(images);
  const auto size = static_cast<unsigned long>(width) * static_cast<unsigned long>(width);
  const std::size_t outputBytes = size * sizeof(unsigned short);
  std::vector<unsigned short> output(size);
  std::vector<unsigned char> source(outputBytes * static_cast<std::size_t>(images), 1);
  const auto secondsEach = [&](auto&& copy) {
    const double begin = secondsOfClock(CLOCK_THREAD_CPUTIME_ID);
    for (int i = 0; i < calls; ++i) {
      copy(i % images);
      benchmark::ClobberMemory();
    }
    return (secondsOfClock(CLOCK_THREAD_CPUTIME_ID) - begin) / calls;
  };
  Rounds rounds;
  for (auto _ : state) {
    rounds.run(
        [&] {
          return secondsEach([&](int image) {
            std::memcpy(output.data(), source.data() + outputBytes * static_cast<std::size_t>(image), outputBytes);
          });
        },
        [&] {
          return secondsEach(
              [&](int image) { require(take(image + 1, output.data(), size) == RC_SUCCESS, "an image"); });
        });
    state.SetIterationTime(rounds.lastMeasured());
  }
  state.counters["memcpy_us"] = rounds.baseline() * 1e6;
  state.counters["call_us"] = rounds.measured() * 1e6;
  state.counters["added_us"] = rounds.difference() * 1e6;
  state.counters["ratio"] = 1 / rounds.ratio();
}

/// Runs @p take, which blocks until it has copied one frame, on its own thread, and pushes that frame.
/// Returns the seconds from the push to the end of the copy.
double latencyOf(const std::function<void()>& take)
{
  std::atomic<double> taken{0};
  std::thread application([&] {
    take();
    taken = secondsOfClock(CLOCK_MONOTONIC);
  });
  std::this_thread::sleep_for(std::chrono::milliseconds(1)); // the application is waiting now
  const double pushed = secondsOfClock(CLOCK_MONOTONIC);
  require(VXSIM_PushFrames(0, 1) == VX_SUCCESS, "VXSIM_PushFrames");
  application.join();
  return taken - pushed;
}

void latency(benchmark::State& state, int width)
{
  BenchmarkCamera camera(width, width, "Source=manual\nScene=stamp\n");
  BareCamera bare(camera);
  const auto size = static_cast<unsigned long>(width) * static_cast<unsigned long>(width);
  std::vector<unsigned short> output(size);
  Rounds rounds;
  for (auto _ : state) {
    rounds.run(
        [&] {
          bare.queueAll();
          bare.start();
          const double seconds = latencyOf([&] {
            bare.loop(1, [&](const unsigned char* buffer, int) {
              std::memcpy(output.data(), buffer, size * sizeof(unsigned short));
              benchmark::ClobberMemory();
            });
          });
          bare.stop();
          return seconds;
        },
        [&] {
          camera.setUntilAborted();
          require(StartAcquisition() == RC_SUCCESS, "StartAcquisition");
          const double seconds = latencyOf([&] {
            require(WaitForAcquisitionTimeOut(kWaitMs) == RC_SUCCESS, "WaitForAcquisition");
            require(GetMostRecentImage16(output.data(), size) == RC_SUCCESS, "GetMostRecentImage16");
          });
          require(AbortAcquisition() == RC_SUCCESS, "AbortAcquisition");
          return seconds;
        });
    state.SetIterationTime(rounds.lastMeasured());
  }
  state.counters["bare_us"] = rounds.baseline() * 1e6;
  state.counters["library_us"] = rounds.measured() * 1e6;
  state.counters["added_us"] = rounds.difference() * 1e6;
  state.counters["ratio"] = rounds.ratio();
}

} // namespace

int main(int argc, char** argv)
{
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  printBenchmarkSetting("128x128 in the cache, 2048x2048 out of a ring of 30, 16 bits out");
  for (const int width : {kSmallWidth, kLargeWidth}) {
    const std::string size = "/" + std::to_string(width) + "x" + std::to_string(width);
    for (const wchar_t* const encoding : {L"Mono16", L"Mono12Packed"}) {
      const std::string from = "/" + std::string(encoding, encoding + std::wcslen(encoding));
      registerRounds("call/GetImages16" + from + size, kCallRounds,
                     [=](auto& state) { call(state, width, encoding, takeRange); });
      registerRounds("call/vxmcd_GetIntactImage16" + from + size, kCallRounds,
                     [=](auto& state) { call(state, width, encoding, takeIntact); });
    }
    registerRounds("latency" + size, kLatencyRounds, [=](auto& state) { latency(state, width); });
  }
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
