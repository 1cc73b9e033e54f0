// SPDX-License-Identifier: MIT
// Disk: whether a run could be recorded in a directory.
#include "tools/doctor/Checks.h"
#include "tools/doctor/SystemFiles.h"
#include "tools/Messages.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <limits>
#include <memory>
#include <sys/resource.h>
#include <sys/statvfs.h>
#include <system_error>
#include <unistd.h>

namespace vxtool {

namespace {

constexpr std::size_t kBlockBytes = 4U << 20;
constexpr std::size_t kAlignment = 4096;
constexpr double kLongestSeconds = 2.0;
constexpr double kLargestShare = 0.25; ///< of the free space that the trial may take
constexpr double kSafety = 1.2;        ///< times the camera's rate

using TClock = std::chrono::steady_clock;

struct TFree
{
  void operator()(void* memory) const { std::free(memory); }
};

/// A file of its own in a directory, gone with the object.
class TTrialFile final
{
public:
  explicit TTrialFile(const std::string& directory) : path_(directory + "/vxmcd-doctor-XXXXXX")
  {
    descriptor_ = mkostemp(path_.data(), O_DIRECT | O_CLOEXEC);
    if (descriptor_ < 0 && errno == EINVAL) {
      path_ = directory + "/vxmcd-doctor-XXXXXX";
      descriptor_ = mkostemp(path_.data(), O_CLOEXEC);
      isBuffered_ = true;
    }
    if (descriptor_ >= 0) unlink(path_.c_str());
  }
  ~TTrialFile()
  {
    if (descriptor_ >= 0) close(descriptor_);
  }
  TTrialFile(const TTrialFile&) = delete;
  TTrialFile& operator=(const TTrialFile&) = delete;

  int Descriptor() const { return descriptor_; }
  bool IsBuffered() const { return isBuffered_; }

private:
  std::string path_;
  int descriptor_ = -1;
  bool isBuffered_ = false;
};

double FileLimit()
{
  rlimit limit = {};
  if (getrlimit(RLIMIT_FSIZE, &limit) != 0 || limit.rlim_cur == RLIM_INFINITY)
    return std::numeric_limits<double>::infinity();
  return static_cast<double>(limit.rlim_cur);
}

/// Bytes a second, with everything on the disk at the end; 0, with the reason in errno, when it cannot be written.
double MeasureWrites(const TTrialFile& file, double mostBytes)
{
  const std::unique_ptr<void, TFree> block(std::aligned_alloc(kAlignment, kBlockBytes));
  if (!block) return 0.0;
  std::memset(block.get(), 0x5A, kBlockBytes);
  const auto begin = TClock::now();
  const auto seconds = [begin] { return std::chrono::duration<double>(TClock::now() - begin).count(); };
  double written = 0.0;
  do {
    const ssize_t count = write(file.Descriptor(), block.get(), kBlockBytes);
    if (count != static_cast<ssize_t>(kBlockBytes)) {
      if (written + static_cast<double>(kBlockBytes) > FileLimit())
        errno = EFBIG; // whatever the file system says of a part of a block
      else if (count >= 0)
        errno = ENOSPC;
      return 0.0;
    }
    written += static_cast<double>(count);
  } while (seconds() < kLongestSeconds && written + kBlockBytes < mostBytes);
  if (fdatasync(file.Descriptor()) != 0) return 0.0;
  return written / seconds();
}

void CompareWithCamera(TFindings& findings, const TCameraFacts& facts, double diskBytesPerSecond, double freeBytes)
{
  const double camera = facts.BytesPerSecond();
  if (camera <= 0.0 || diskBytesPerSecond <= 0.0) return;
  const std::string text = "the camera makes " + BytesText(camera) + "/s at its present settings";
  if (diskBytesPerSecond < kSafety * camera)
    findings.Warn(text + ", more than can be recorded here for long",
                  "record to a faster disk, or take a smaller area, more binning or a longer cycle");
  else
    findings.Right(text + ", which fill the free space in " +
                   std::to_string(static_cast<long long>(freeBytes / camera)) + " s");
}

} // namespace

void CheckDisk(TFindings& findings, const TCameraFacts& facts, const std::string& directory)
{
  struct statvfs system = {};
  if (statvfs(directory.c_str(), &system) != 0)
    return findings.Problem(directory + ": " + std::generic_category().message(errno),
                            "give a directory that is there with --disk");
  const double freeBytes = static_cast<double>(system.f_bavail) * static_cast<double>(system.f_frsize);
  const TTrialFile file(directory);
  if (file.Descriptor() < 0)
    return findings.Problem(directory + ": no file can be made: " + std::generic_category().message(errno),
                            "choose a directory that you may write to");
  const double speed = MeasureWrites(file, std::max(kLargestShare * freeBytes, static_cast<double>(kBlockBytes)));
  const int reason = errno;
  if (speed <= 0.0)
    return findings.Problem(directory + ": cannot be written: " + std::generic_category().message(reason) + "; " +
                                BytesText(freeBytes) + " are free",
                            reason == EFBIG ? "ulimit -f unlimited" : "make space, or choose another disk");
  findings.Right(directory + ": writes " + BytesText(speed) + "/s, " + BytesText(freeBytes) + " are free");
  if (file.IsBuffered())
    findings.Warn(directory +
                      ": its file system takes no writes past the page cache; recording takes more time of "
                      "the processor",
                  "record to a local file system such as ext4 or xfs");
  CompareWithCamera(findings, facts, speed, freeBytes);
}

} // namespace vxtool
