// SPDX-License-Identifier: MIT
// A GigE Vision camera through the flat interface, beside Aravis alone: the same camera, over the loopback interface of a
// network namespace, in turns.
//
// `frames` asks the camera for more frames than it can send and counts those that are fetched for two seconds, with and
// without the library; `cpu_s_per_gb` is the processor time of this process, the camera is another one. Frames before
// that are not counted: the first pass through the ring of 300 MB touches new memory. `steady` asks for 300 frames a
// second for a minute and counts the lost ones. `open`, `start` and `stop` compare the calls. `mono12p` converts frames in
// turns with memcpy of as many bytes; the frames are larger than the caches together.
#include "BenchmarkSetting.h"
#include "RegisterRounds.h"
#include "Rounds.h"
#include "tests/support/OwnNetwork.h"
#include "vxcore/genicam/aravis.h"
#include "vxcore/genicam/device_opening.h"
#include "vxcore/genicam/TFrameConverter.h"
#include "vxcore/genicam/TFrameStream.h"

#include "vxcore_simulator.h"
#include "vxmcd.h"

#include <benchmark/benchmark.h>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using namespace vxgenicam;

constexpr const char* kAddress = "127.0.0.1";
constexpr double kSeconds = 2.0;
constexpr long long kRingBytes = 300'000'000;
constexpr double kFastest = 1000.0; ///< frames a second asked for

/// What is taken from the camera.
struct Request
{
  int side;                   ///< of a frame, pixels
  double rate;                ///< frames a second asked for
  double seconds;             ///< in which frames are counted
  long long framesBefore = 1; ///< the first one comes late
};

/// The camera of the tests, with images from a file: it has nothing to compute.
class Camera
{
public:
  explicit Camera(int side)
  {
    char path[] = "/tmp/genicam_benchmark.XXXXXX";
    const int file = mkstemp(path);
    const std::vector<char> image(static_cast<std::size_t>(side) * static_cast<std::size_t>(side) * 2, 42);
    if (file < 0 || write(file, image.data(), image.size()) != static_cast<ssize_t>(image.size())) std::abort();
    close(file);
    const std::string images = std::string("images=") + path;
    int pipes[2];
    if (pipe(pipes) != 0) std::abort();
    pid_ = fork();
    if (pid_ == 0) {
      dup2(pipes[1], STDOUT_FILENO);
      execl(VXMCD_TEST_CAMERA, VXMCD_TEST_CAMERA, kAddress, "SIM1", "formats=Mono16", images.c_str(), nullptr);
      _exit(127);
    }
    char ready[5];
    if (read(pipes[0], ready, sizeof ready) != sizeof ready) std::abort();
    close(pipes[0]);
    close(pipes[1]);
    unlink(path);
  }
  ~Camera()
  {
    kill(pid_, SIGKILL);
    waitpid(pid_, nullptr, 0);
  }
  Camera(const Camera&) = delete;
  Camera& operator=(const Camera&) = delete;

private:
  pid_t pid_ = -1;
};

/// What one way of taking frames came to.
struct Taken
{
  double framesPerSecond = 0.0;
  double cpuPerGigabyte = 0.0;
  double openSeconds = 0.0;
  double startSeconds = 0.0;
  double stopSeconds = 0.0;
  long long lost = 0;
};

/// Runs one step and returns what it took, in s.
template <class Step>
double secondsOf(Step&& step)
{
  const double begin = secondsOfClock(CLOCK_MONOTONIC);
  step();
  return secondsOfClock(CLOCK_MONOTONIC) - begin;
}

/// Counts the frames that @p take fetches.
template <class Take>
void measureFrames(Taken& taken, const Request& request, Take&& take)
{
  for (long long frames = 0; frames < request.framesBefore;) frames += take();
  const double cpu = secondsOfClock(CLOCK_PROCESS_CPUTIME_ID);
  const double begin = secondsOfClock(CLOCK_MONOTONIC);
  long long frames = 0;
  while (secondsOfClock(CLOCK_MONOTONIC) - begin < request.seconds) frames += take();
  const double passed = secondsOfClock(CLOCK_MONOTONIC) - begin;
  taken.framesPerSecond = static_cast<double>(frames) / passed;
  taken.cpuPerGigabyte = (secondsOfClock(CLOCK_PROCESS_CPUTIME_ID) - cpu) /
                         (static_cast<double>(frames) * request.side * request.side * 2 * 1e-9);
}

Taken throughAravis(const Request& request)
{
  const int side = request.side;
  Taken taken;
  int code = 0;
  std::string error;
  TObject<ArvDevice> device;
  taken.openSeconds = secondsOf([&] { device = OpenDevice(kAddress, code, error); });
  if (!device) std::abort();
  arv_gv_device_auto_packet_size(ARV_GV_DEVICE(device.get()), nullptr);
  arv_device_set_string_feature_value(device.get(), "PixelFormat", "Mono16", nullptr);
  for (const char* node : {"OffsetX", "OffsetY"})
    arv_device_set_integer_feature_value(device.get(), node, 0, nullptr);
  for (const char* node : {"Width", "Height"})
    arv_device_set_integer_feature_value(device.get(), node, side, nullptr);
  arv_device_set_float_feature_value(device.get(), "ExposureTime", 100.0, nullptr);
  arv_device_set_float_feature_value(device.get(), "AcquisitionFrameRate", request.rate, nullptr);
  TWakeUp wakeUp;
  std::unique_ptr<TFrameStream> stream;
  taken.startSeconds = secondsOf([&] {
    stream = TFrameStream::Make(
        device.get(), {}, static_cast<std::size_t>(side) * static_cast<std::size_t>(side) * 2, wakeUp, error);
    if (!stream) std::abort();
    arv_device_execute_command(device.get(), "AcquisitionStart", nullptr);
  });
  measureFrames(taken, request, [&] {
    const std::uint64_t seen = wakeUp.Count();
    ArvBuffer* const buffer = stream->Take();
    if (!buffer) {
      wakeUp.WaitAfter(seen, TWakeUp::TClock::now() + std::chrono::milliseconds(100));
      return 0;
    }
    const bool isGood = arv_buffer_get_status(buffer) == ARV_BUFFER_STATUS_SUCCESS;
    stream->Return(buffer, false);
    return isGood ? 1 : 0;
  });
  taken.stopSeconds = secondsOf([&] { arv_device_execute_command(device.get(), "AcquisitionStop", nullptr); });
  return taken;
}

void check(unsigned int code, const char* call)
{
  if (code == RC_SUCCESS) return;
  std::fprintf(stderr, "%s: %u\n", call, code);
  std::abort();
}
#define CHECKED(call) check(call, #call)

Taken throughLibrary(const Request& request)
{
  const int side = request.side;
  Taken taken;
  VXSIM_Configure((std::string("[Backends]\nSimulator = off\n[GenICam]\nDevices = ") + kAddress + "\n").c_str());
  char directory[] = "";
  taken.openSeconds = secondsOf([&] { CHECKED(Initialize(directory)); });
  CHECKED(SetImage(1, 1, 1, side, 1, side));
  CHECKED(SetExposureTime(0.0001F));
  CHECKED(SetKineticCycleTime(static_cast<float>(1.0 / request.rate)));
  CHECKED(SetAcquisitionMode(5));
  taken.startSeconds = secondsOf([] { CHECKED(StartAcquisition()); });
  long last = 0;
  long counted = 0;
  measureFrames(taken, request, [&] {
    WaitForAcquisitionTimeOut(100);
    GetTotalNumberImagesAcquired(&last);
    const long added = last - counted;
    counted = last;
    return added;
  });
  int handle = 0;
  GetSDK3Handle(&handle);
  VX_GetInt(handle, L"FramesLost", &taken.lost);
  taken.stopSeconds = secondsOf([] { CHECKED(AbortAcquisition()); });
  ShutDown();
  return taken;
}

void compareFrames(benchmark::State& state, int side)
{
  const Camera camera(side);
  const Request request{side, kFastest, kSeconds, kRingBytes / (2LL * side * side)};
  Rounds frames;
  Rounds cpu;
  for (auto round : state) {
    (void)round;
    Taken alone;
    Taken library;
    frames.run([&] { return (alone = throughAravis(request)).framesPerSecond; },
               [&] { return (library = throughLibrary(request)).framesPerSecond; });
    cpu.add(alone.cpuPerGigabyte, library.cpuPerGigabyte);
    state.SetIterationTime(1.0 / library.framesPerSecond);
  }
  state.counters["aravis_fps"] = frames.baseline();
  state.counters["library_fps"] = frames.measured();
  state.counters["ratio"] = frames.ratio();
  state.counters["aravis_cpu_s_per_gb"] = cpu.baseline();
  state.counters["library_cpu_s_per_gb"] = cpu.measured();
}

void compareCalls(benchmark::State& state)
{
  constexpr int kSide = 512;
  const Camera camera(kSide);
  const Request request{kSide, 100.0, 0.05};
  Rounds open;
  Rounds start;
  Rounds stop;
  for (auto round : state) {
    (void)round;
    const Taken alone = throughAravis(request);
    const Taken library = throughLibrary(request);
    open.add(alone.openSeconds, library.openSeconds);
    start.add(alone.startSeconds, library.startSeconds);
    stop.add(alone.stopSeconds, library.stopSeconds);
    state.SetIterationTime(library.openSeconds);
  }
  const auto report = [&state](const std::string& name, const Rounds& rounds) {
    state.counters["aravis_" + name + "_ms"] = rounds.baseline() * 1e3;
    state.counters["library_" + name + "_ms"] = rounds.measured() * 1e3;
  };
  report("open", open);
  report("start", start);
  report("stop", stop);
}

void keepSteady(benchmark::State& state)
{
  constexpr int kSide = 512;
  constexpr double kRate = 300.0; // the camera gives less than is asked
  constexpr double kMinute = 60.0;
  const Camera camera(kSide);
  Taken alone;
  Taken library;
  for (auto round : state) {
    (void)round;
    alone = throughAravis({kSide, kRate, kMinute});
    library = throughLibrary({kSide, kRate, kMinute});
    state.SetIterationTime(kMinute);
  }
  state.counters["aravis_fps"] = alone.framesPerSecond;
  state.counters["library_fps"] = library.framesPerSecond;
  state.counters["library_lost"] = static_cast<double>(library.lost);
  state.counters["aravis_cpu_s_per_gb"] = alone.cpuPerGigabyte;
  state.counters["library_cpu_s_per_gb"] = library.cpuPerGigabyte;
}

void convertMono12p(benchmark::State& state)
{
  constexpr std::size_t kSide = 2048;
  constexpr std::size_t kFrames = 16;
  const TFrameShape shape{EPixelFormat::Mono12p, kSide, kSide, 0};
  TFrameConverter converter(shape, {0, 0, kSide, kSide}, EEncoding::Mono12Packed);
  std::vector<unsigned char> frames(shape.Bytes() * kFrames, 0x5A);
  std::vector<unsigned char> images(converter.ImageBytes() * kFrames);
  Rounds rounds;
  const auto overFrames = [&](auto&& one) {
    return secondsOf([&] {
      for (std::size_t frame = 0; frame < kFrames; ++frame)
        one(frames.data() + frame * shape.Bytes(), images.data() + frame * converter.ImageBytes());
    });
  };
  for (auto round : state) {
    (void)round;
    rounds.run(
        [&] {
          return overFrames(
              [&](const unsigned char* from, unsigned char* to) { std::memcpy(to, from, shape.Bytes()); });
        },
        [&] {
          return overFrames([&](const unsigned char* from, unsigned char* to) { converter.Convert(from, to); });
        });
    benchmark::ClobberMemory();
    state.SetIterationTime(rounds.lastMeasured());
  }
  state.counters["memcpy_GB/s"] = static_cast<double>(frames.size()) / rounds.baseline() * 1e-9;
  state.counters["convert_GB/s"] = static_cast<double>(frames.size()) / rounds.measured() * 1e-9;
  state.counters["ratio"] = 1.0 / rounds.ratio();
}

} // namespace

int main(int argc, char** argv)
{
  const std::string problem = EnterOwnNetwork();
  if (!problem.empty()) {
    std::fprintf(stderr, "genicam_benchmark: %s\n", problem.c_str());
    return 1;
  }
  printBenchmarkSetting("512x512 and 1024x1024 of 16 bits, 2048x2048 of 12 bits");
  registerRounds("mono12p/2048x2048", 51, convertMono12p, benchmark::kMillisecond);
  registerRounds("calls/512x512", 15, compareCalls, benchmark::kMillisecond);
  registerRounds("frames/512x512", 9, [](benchmark::State& state) { compareFrames(state, 512); });
  registerRounds("frames/1024x1024", 9, [](benchmark::State& state) { compareFrames(state, 1024); });
  registerRounds("steady/512x512", 1, keepSteady, benchmark::kMillisecond);
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
