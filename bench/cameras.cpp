// SPDX-License-Identifier: MIT
// What several cameras in one process cost each other: frames a second of N independent cameras in one process, against
// N processes with a camera each, in turns, and against one camera alone.
//
// All are runs until abort, whose frames are counted over a stretch of time. The cameras make frames inside
// VX_WaitBuffer, as fast as the acquisition threads fetch them, so that N cameras use as many cores as there are. Every
// group, also the one process with N cameras, is a child of the benchmark that does nothing while the others are measured.
// `cpu_ratio` compares frames for each second of processor time, which other load on the machine hardly changes.
#include "BenchmarkCamera.h"
#include "BenchmarkSetting.h"
#include "RegisterRounds.h"
#include "Rounds.h"
#include "vxcore_simulator.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <memory>
#include <string>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

constexpr long kFirst = 101;
constexpr int kUntilAborted = 5;
constexpr long long kRingBytes = 300'000'000;
constexpr long long kMaxSlots = 5000;
constexpr int kRounds = 15;
constexpr auto kWarmUp = std::chrono::milliseconds(20);
constexpr auto kStretch = std::chrono::milliseconds(150);

struct Frames
{
  const char* name;
  const char* scene;
  int width;
  int height;
};
constexpr Frames kTiny{"8x4", "stamp", 8, 4};
constexpr Frames kMedium{"512x512", "counter", 512, 512};

/// What a process has done up to now.
struct Progress
{
  double frames = 0;
  double seconds = 0;
  double cpuSeconds = 0;
};

struct Figures
{
  double perSecond = 0;
  double perCpuSecond = 0;
};

/// The cameras of one process, closed again at the end.
class Cameras
{
public:
  Cameras(int number, const Frames& frames) : number_(number)
  {
    std::string text = "[Simulator]\nCameras=" + std::to_string(number) + "\n";
    for (int camera = 0; camera < number; ++camera)
      text += "[Camera" + std::to_string(camera) +
              "]\nModel=TRELLIS CMOS\nNoise=off\nClock=free\nScene=" + frames.scene + "\n";
    require(VXSIM_Configure(text.c_str()) == VX_SUCCESS, VXSIM_GetLastError());
    require(vxmcd_SetIndependentCameras(1) == RC_SUCCESS, "vxmcd_SetIndependentCameras");
    forEach([&frames] {
      require(Initialize(nullptr) == RC_SUCCESS, "Initialize");
      int handle = -1;
      GetSDK3Handle(&handle);
      require(VX_SetInt(handle, L"AOIWidth", frames.width) == VX_SUCCESS, "AOIWidth");
      require(VX_SetInt(handle, L"AOIHeight", frames.height) == VX_SUCCESS, "AOIHeight");
      require(SetAcquisitionMode(kUntilAborted) == RC_SUCCESS, "SetAcquisitionMode");
    });
  }

  void start() const
  {
    forEach([] { require(StartAcquisition() == RC_SUCCESS, "StartAcquisition"); });
  }

  void abort() const
  {
    forEach([] { require(AbortAcquisition() == RC_SUCCESS, "AbortAcquisition"); });
  }

  Progress progress() const
  {
    double sum = 0;
    forEach([&sum] { sum += static_cast<double>(frames()); });
    return {sum, secondsOfClock(CLOCK_MONOTONIC), secondsOfClock(CLOCK_PROCESS_CPUTIME_ID)};
  }

  /// Until every slot of every ring has had a frame: new pages take longer than frames.
  void warmUp() const
  {
    start();
    forEach([] {
      int handle = -1;
      GetSDK3Handle(&handle);
      long long bytes = 0;
      require(VX_GetInt(handle, L"ImageSizeBytes", &bytes) == VX_SUCCESS, "ImageSizeBytes");
      while (frames() < std::min(kRingBytes / bytes, kMaxSlots)) std::this_thread::sleep_for(kWarmUp);
    });
    abort();
  }

private:
  template <class Action>
  void forEach(Action action) const
  {
    for (long handle = kFirst; handle < kFirst + number_; ++handle) {
      require(SetCurrentCamera(handle) == RC_SUCCESS, "SetCurrentCamera");
      action();
    }
  }

  static long frames()
  {
    long count = 0;
    GetTotalNumberImagesAcquired(&count);
    return count;
  }

  int number_;
};

/// A child process with cameras, which measures when it is told to.
class Process
{
public:
  Process(int cameras, const Frames& frames)
  {
    int toChild[2] = {};
    int toParent[2] = {};
    require(pipe(toChild) == 0 && pipe(toParent) == 0, "pipe");
    child_ = fork();
    require(child_ >= 0, "fork");
    if (child_ == 0) {
      close(toChild[1]);
      close(toParent[0]);
      serve(cameras, frames, toChild[0], toParent[1]);
    }
    close(toChild[0]);
    close(toParent[1]);
    commands_ = toChild[1];
    answers_ = toParent[0];
    answer(); // it is ready
  }
  ~Process()
  {
    tell('q');
    close(commands_);
    close(answers_);
    waitpid(child_, nullptr, 0);
  }
  Process(const Process&) = delete;
  Process& operator=(const Process&) = delete;

  void tell(char command) const { require(write(commands_, &command, 1) == 1, "a command to a child"); }
  Progress answer() const
  {
    Progress progress;
    require(read(answers_, &progress, sizeof progress) == sizeof progress, "the answer of a child");
    return progress;
  }

private:
  [[noreturn]] static void serve(int cameras, const Frames& frames, int commands, int answers)
  {
    const Cameras group(cameras, frames);
    group.warmUp();
    for (char command = 'p'; command != 'q';) {
      if (command == 's') group.start();
      if (command == 'a') group.abort();
      const Progress progress = group.progress();
      require(write(answers, &progress, sizeof progress) == sizeof progress, "an answer to the parent");
      require(read(commands, &command, 1) == 1, "a command from the parent");
    }
    _exit(0);
  }

  pid_t child_ = -1;
  int commands_ = -1;
  int answers_ = -1;
};

using Processes = std::vector<std::unique_ptr<Process>>;

std::vector<Progress> tellAll(const Processes& processes, char command)
{
  for (const auto& process : processes) process->tell(command);
  std::vector<Progress> answers;
  for (const auto& process : processes) answers.push_back(process->answer());
  return answers;
}

/// All processes at the same time; they begin before and end after the stretch in which frames are counted.
Figures measure(const Processes& processes)
{
  tellAll(processes, 's');
  std::this_thread::sleep_for(kWarmUp);
  const std::vector<Progress> before = tellAll(processes, 'p');
  std::this_thread::sleep_for(kStretch);
  const std::vector<Progress> after = tellAll(processes, 'p');
  tellAll(processes, 'a');
  Figures sum;
  double frames = 0;
  double cpuSeconds = 0;
  for (std::size_t i = 0; i < before.size(); ++i) {
    frames += after[i].frames - before[i].frames;
    cpuSeconds += after[i].cpuSeconds - before[i].cpuSeconds;
    sum.perSecond += (after[i].frames - before[i].frames) / (after[i].seconds - before[i].seconds);
  }
  sum.perCpuSecond = frames / cpuSeconds;
  return sum;
}

void severalCameras(benchmark::State& state, const Frames& frames, int number)
{
  Processes together;
  Processes apart;
  together.push_back(std::make_unique<Process>(number, frames));
  for (int camera = 0; camera < number; ++camera) apart.push_back(std::make_unique<Process>(1, frames));
  Processes alone;
  alone.push_back(std::make_unique<Process>(1, frames));

  Rounds wall;
  Rounds cpu;
  Rounds single;
  for (auto _ : state) {
    Figures baseline;
    Figures measured;
    wall.run(
        [&] {
          baseline = measure(apart);
          return baseline.perSecond;
        },
        [&] {
          measured = measure(together);
          return measured.perSecond;
        });
    cpu.add(baseline.perCpuSecond, measured.perCpuSecond);
    single.add(measure(alone).perSecond, measured.perSecond);
    state.SetIterationTime(std::chrono::duration<double>(kStretch).count());
  }
  state.counters["together_per_s"] = wall.measured();
  state.counters["processes_per_s"] = wall.baseline();
  state.counters["alone_per_s"] = single.baseline();
  state.counters["ratio"] = wall.ratio();
  state.counters["cpu_ratio"] = cpu.ratio();
  state.counters["times_alone"] = single.ratio();
}

} // namespace

int main(int argc, char** argv)
{
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  printBenchmarkSetting("16 bits; 8x4 with stamps, 512x512 with a counter pattern");
  for (const Frames& frames : {kTiny, kMedium})
    for (const int number : {1, 2, 4, 8})
      registerRounds(
          std::string("cameras/") + frames.name + "/" + std::to_string(number), kRounds,
          [=](auto& state) { severalCameras(state, frames, number); }, benchmark::kMillisecond);
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
