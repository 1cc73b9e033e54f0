// SPDX-License-Identifier: MIT
// What the call trace costs: CPU time of a call of the interface, of one with a call into the feature library, and of an
// image, in programs that run with and without VXMCD_TRACE.
//
// The library reads VXMCD_TRACE when it is loaded, so that each figure is from a process of its own. Rounds with and without
// take turns. What a call costs without a trace is compared with a copy of its code in this program, behind the same two
// jumps and one load for the log; between versions of the library, compare its figures.
#include "BenchmarkCamera.h"
#include "BenchmarkSetting.h"
#include "Rounds.h"

#include <array>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr int kRounds = 15;
constexpr int kCalls = 200'000;
constexpr int kImages = 200;
constexpr int kSide = 1024;

/// CPU seconds of one call.
struct TCosts
{
  double api;       ///< of a call of the interface that does next to nothing
  double bare;      ///< of the same code without log and trace
  double withCore;  ///< of a call with one call into the feature library
  double withImage; ///< of the retrieval of an image
};

template <class Call>
double secondsOf(int count, Call call)
{
  const double begin = secondsOfClock(CLOCK_THREAD_CPUTIME_ID);
  for (int i = 0; i < count; ++i) call();
  return (secondsOfClock(CLOCK_THREAD_CPUTIME_ID) - begin) / count;
}

long bareHandle = 101;

// What GetCurrentCamera() does, behind the two jumps of a call into a library, and one relaxed load for the log.
std::atomic<int> bareLevel{-1};
[[gnu::noinline]] unsigned int bareBody(long* handle)
{
  if (handle) *handle = __atomic_load_n(&bareHandle, __ATOMIC_ACQUIRE);
  return RC_SUCCESS;
}
[[gnu::noinline]] unsigned int bareCall(long* handle)
{
  if (bareLevel.load(std::memory_order_relaxed) >= 3) std::abort();
  return bareBody(handle);
}
unsigned int (*volatile barePointer)(long*) = bareCall;
unsigned int (*volatile apiPointer)(long*) = GetCurrentCamera;

void measure(int pipe)
{
  const BenchmarkCamera camera(kSide, kSide);
  static std::array<unsigned short, std::size_t{kSide} * kSide> image;
  camera.startUntilAborted();
  AbortAcquisition();
  long handle = 0;
  int number = 0;
  TCosts costs{};
  for (int warmUp = 2; warmUp-- > 0;) {
    costs.api = secondsOf(kCalls, [&] { apiPointer(&handle); });
    costs.bare = secondsOf(kCalls, [&] { barePointer(&handle); });
    costs.withCore = secondsOf(kCalls / 4, [&] { IsCoolerOn(&number); });
    costs.withImage = secondsOf(kImages, [&] {
      require(GetMostRecentImage16(image.data(), image.size()) == RC_SUCCESS, "GetMostRecentImage16");
    });
  }
  require(write(pipe, &costs, sizeof costs) == sizeof costs, "write");
}

TCosts costsWith(const char* setting)
{
  int ends[2];
  require(pipe(ends) == 0, "pipe");
  const pid_t child = fork();
  if (child == 0) {
    close(ends[0]);
    if (setting)
      setenv("VXMCD_TRACE", setting, 1);
    else
      unsetenv("VXMCD_TRACE");
    execl("/proc/self/exe", "trace_benchmark", "--measure", std::to_string(ends[1]).c_str(), nullptr);
    _exit(1);
  }
  close(ends[1]);
  TCosts costs{};
  require(read(ends[0], &costs, sizeof costs) == sizeof costs, "a measuring process");
  close(ends[0]);
  waitpid(child, nullptr, 0);
  return costs;
}

} // namespace

int main(int argc, char** argv)
{
  if (argc == 3 && std::strcmp(argv[1], "--measure") == 0) {
    measure(std::atoi(argv[2]));
    return 0;
  }
  printBenchmarkSetting("1024x1024 pixels of 16 bits");
  const std::string file = std::string(argc > 1 ? argv[1] : "/var/tmp") + "/trace_benchmark.vxtr";
  const std::string onSetting = file + ",limit=64M";
  const std::string noPixels = onSetting + ",pixels=none";
  Rounds look;
  Rounds api;
  Rounds core;
  Rounds image;
  Rounds imageAlone;
  for (int round = 0; round < kRounds; ++round) {
    const TCosts off = costsWith(nullptr);
    const TCosts on = costsWith(onSetting.c_str());
    const TCosts withoutPixels = costsWith(noPixels.c_str());
    look.add(off.bare, off.api);
    api.add(off.api, on.api);
    core.add(off.withCore, on.withCore);
    image.add(off.withImage, on.withImage);
    imageAlone.add(off.withImage, withoutPixels.withImage);
  }
  std::remove(file.c_str());
  const auto print = [](const char* name, const Rounds& rounds) {
    std::printf("%-52s %9.1f ns %9.1f ns  %+9.1f ns\n", name, rounds.baseline() * 1e9, rounds.measured() * 1e9,
                rounds.difference() * 1e9);
  };
  std::printf("%-52s %12s %12s  %12s\n", "CPU time of a call", "baseline", "measured", "difference");
  print("off: GetCurrentCamera, against its code alone", look);
  print("on: GetCurrentCamera, against off", api);
  print("on: IsCoolerOn, with calls to the feature library", core);
  print("on: an image of 2 MiB, with its checksum", image);
  print("on: an image of 2 MiB, pixels=none", imageAlone);
  return 0;
}
