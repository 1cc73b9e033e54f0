// SPDX-License-Identifier: MIT
// What making a file of a recorded run takes, by the command `vxmcd convert`, against `cp` of the run's bytes. "warm"
// has the run in the page cache, "cold" on the disk only, as it is some time after it was recorded. Both end when the
// copy is in the page cache, on the disk or not (`cp` does not wait for that either).
//
// Environment: VXMCD_BENCHMARK_DIRECTORY and VXMCD_BENCHMARK_MIB (512) as of spool_benchmark.
#include "BenchmarkCamera.h"
#include "BenchmarkDirectory.h"
#include "BenchmarkSetting.h"
#include "RegisterRounds.h"
#include "spool/TSpoolLayout.h"
#include "SpoolRun.h"
#include "WriterComparison.h"

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <spawn.h>
#include <string>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace {

constexpr int kRounds = 9;
constexpr int kWidth = 2048;
const std::string kRun = "run";

double childrenCpuSeconds()
{
  rusage usage{};
  getrusage(RUSAGE_CHILDREN, &usage);
  const auto seconds = [](const timeval& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
  };
  return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

WritingCost runProgram(const std::vector<std::string>& command)
{
  std::vector<char*> arguments;
  for (const std::string& argument : command) arguments.push_back(const_cast<char*>(argument.c_str()));
  arguments.push_back(nullptr);
  const double cpu = childrenCpuSeconds();
  const double begin = secondsOfClock(CLOCK_MONOTONIC);
  pid_t child = 0;
  require(posix_spawnp(&child, arguments[0], nullptr, nullptr, arguments.data(), environ) == 0, arguments[0]);
  int status = 0;
  require(waitpid(child, &status, 0) == child && WIFEXITED(status) && WEXITSTATUS(status) == 0, arguments[0]);
  const double seconds = secondsOfClock(CLOCK_MONOTONIC) - begin;
  return {seconds, seconds, childrenCpuSeconds() - cpu, 0};
}

/// Has the page cache give up the files of a directory, which are on the disk.
void forget(const std::string& directory)
{
  for (const auto& entry : std::filesystem::directory_iterator(directory)) {
    const int file = open(entry.path().c_str(), O_RDONLY);
    require(file >= 0 && posix_fadvise(file, 0, 0, POSIX_FADV_DONTNEED) == 0, "posix_fadvise");
    close(file);
  }
}

void convert(benchmark::State& state, bool isCold)
{
  const BenchmarkDirectory& directory = BenchmarkDirectory::get();
  // Beside the directory that is emptied in each round.
  const std::string run = directory.path() + "." + kRun;
  const char* const text = std::getenv("VXMCD_BENCHMARK_MIB");
  long count = 0;
  double bytes = 0;
  {
    BenchmarkCamera camera(kWidth, kWidth);
    count = std::max(1L, std::atol(text ? text : "512") * 1048576 / static_cast<long>(camera.frameBytes()));
    bytes = static_cast<double>(count) * static_cast<double>(camera.frameBytes());
    spoolSeries(camera, run, TSpoolLayout::kImagesTogether, count);
  }
  const auto timed = [&run, isCold](const std::vector<std::string>& command) {
    if (isCold)
      forget(run);
    else
      runProgram({"sh", "-c", "cat " + run + "/* > /dev/null"});
    return runProgram(command);
  };
  WriterComparison comparison(bytes);
  for (const char* const kind : {"fits", "tif", "raw"})
    comparison.add(kind, [&run, &timed, kind](const std::string& path) {
      return timed({VXMCD_TOOL, "convert", run, "--output", path + "/images." + kind});
    });
  comparison.add("cp", [&run, &timed](const std::string& path) { return timed({"cp", "-r", run, path}); });
  for (auto _ : state) state.SetIterationTime(comparison.round());
  comparison.report(state);
  runProgram({"rm", "-r", run});
}

} // namespace

int main(int argc, char** argv)
{
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  printBenchmarkSetting("16 bits, 2048x2048 (8 MiB)");
  BenchmarkDirectory::get();
  registerRounds(
      "convert/warm", kRounds, [](auto& state) { convert(state, false); }, benchmark::kMillisecond);
  registerRounds(
      "convert/cold", kRounds, [](auto& state) { convert(state, true); }, benchmark::kMillisecond);
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
