// SPDX-License-Identifier: MIT
// Runs that the library writes to the disk, through the interface.
#include "SpoolRun.h"

#include "Rounds.h"
#include "runs/run_format.h"
#include "spool/TAcquisitionMetadata.h"
#include "spool/TSpoolLayout.h"
#include "vxcore_simulator.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <fcntl.h>
#include <filesystem>
#include <thread>
#include <unistd.h>
#include <vector>

namespace fs = std::filesystem;

namespace {

constexpr int kSeries = 3;
constexpr auto kPollingPeriod = std::chrono::milliseconds(1);
constexpr std::size_t kFilesKept = 8; // more than are ever open

bool isRunning()
{
  int status = 0;
  require(GetStatus(&status) == RC_SUCCESS, "GetStatus");
  return status == RC_ACQUIRING;
}

void setSeries(const std::string& directory, int method, long count)
{
  std::string path = directory;
  require(SetSpool(1, method, path.data()) == RC_SUCCESS, "SetSpool");
  require(SetAcquisitionMode(kSeries) == RC_SUCCESS, "SetAcquisitionMode");
  require(SetNumberKinetics(static_cast<int>(count)) == RC_SUCCESS, "SetNumberKinetics");
}

void waitUntilOver()
{
  while (isRunning()) std::this_thread::sleep_for(kPollingPeriod);
}

/// What the run's description says, or -1.
long imagesWritten(const std::string& directory)
{
  TAcquisitionMetadata description;
  std::int64_t images = -1;
  description.LoadFile(directory.c_str());
  description.GetInteger("run", "ImagesWritten", images);
  return images;
}

/// Takes the blocks of all but the newest files of images, which keep their names and lengths.
void emptyOldFiles(const std::string& directory)
{
  std::vector<fs::path> files;
  for (const auto& entry : fs::directory_iterator(directory))
    if (entry.path().extension() == ".dat" && entry.path().filename() != RunFormat::kIndexName)
      files.push_back(entry.path());
  std::sort(files.begin(), files.end());
  for (std::size_t i = 0; i + kFilesKept < files.size(); ++i) {
    const int file = open(files[i].c_str(), O_WRONLY);
    fallocate(file, FALLOC_FL_PUNCH_HOLE | FALLOC_FL_KEEP_SIZE, 0, static_cast<off_t>(fs::file_size(files[i])));
    close(file);
  }
}

/// Repeats an action on its own thread, once per period, as long as the object lives.
template <class Action>
class Repeater
{
public:
  Repeater(std::chrono::milliseconds period, Action action)
      : thread_([this, period, action] {
          while (!ends_) {
            action();
            std::this_thread::sleep_for(period);
          }
        })
  {
  }
  ~Repeater()
  {
    ends_ = true;
    thread_.join();
  }
  Repeater(const Repeater&) = delete;
  Repeater& operator=(const Repeater&) = delete;

private:
  std::atomic<bool> ends_{false};
  std::thread thread_;
};

} // namespace

WritingCost spoolSeries(const BenchmarkCamera& camera, const std::string& directory, int method, long count)
{
  setSeries(directory, method, count);
  WritingClock clock;
  require(StartAcquisition() == RC_SUCCESS, "StartAcquisition");
  while (camera.framesSoFar() < count && isRunning()) std::this_thread::sleep_for(kPollingPeriod);
  clock.accepted();
  waitUntilOver();
  const WritingCost cost = clock.onDisk();
  require(imagesWritten(directory) == count, "every frame is written");
  return cost;
}

FixedRateResult spoolAtRate(const BenchmarkCamera& camera, const std::string& directory, long count,
                            double framesPerSecond)
{
  FixedRateResult result;
  setSeries(directory, TSpoolLayout::kImagesTogether, count);
  const double cpu = secondsOfClock(CLOCK_PROCESS_CPUTIME_ID);
  VXSIM_Statistics before{};
  VXSIM_GetStatistics(0, &before);
  require(StartAcquisition() == RC_SUCCESS, "StartAcquisition");
  {
    const Repeater cleaning(std::chrono::milliseconds(200), [&] { emptyOldFiles(directory); });
    const auto begin = std::chrono::steady_clock::now();
    for (; result.frames < count && isRunning(); ++result.frames) {
      const std::chrono::duration<double> due(static_cast<double>(result.frames) / framesPerSecond);
      std::this_thread::sleep_until(begin + std::chrono::duration_cast<std::chrono::nanoseconds>(due));
      VXSIM_PushFrames(0, 1); // what does not fit is counted as overflowed
      result.maxWaiting = std::max(result.maxWaiting, result.frames + 1 - camera.framesSoFar());
    }
    result.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
    waitUntilOver();
  }
  result.cpuSeconds = secondsOfClock(CLOCK_PROCESS_CPUTIME_ID) - cpu;
  VXSIM_Statistics after{};
  VXSIM_GetStatistics(0, &after);
  result.overflowed = after.framesOverflowed - before.framesOverflowed;
  result.written = imagesWritten(directory);
  return result;
}
