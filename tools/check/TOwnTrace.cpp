// SPDX-License-Identifier: MIT
// Making, finding and removing the file.
#include "tools/check/TOwnTrace.h"

#include "trace/trace_format.h"
#include "trace/TTraceFile.h"
#include "trace/TTraceSettings.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace vxtool {

namespace {

namespace fs = std::filesystem;

constexpr const char* kVariable = "VXMCD_TRACE";
constexpr const char* kOptions = ",limit=64M"; // checks that run for hours need not fill the disk
constexpr const char* kPrefix = "vxmcd-check-";

// The number of the process is the same in the program that is started again.
std::string OwnName()
{
  return kPrefix + std::to_string(getpid()) + ".vxtr";
}

// A new directory when files cannot be made in the working directory; "" for none.
std::string TemporaryDirectory()
{
  std::error_code error;
  std::string directory = (fs::temp_directory_path(error) / (std::string(kPrefix) + "XXXXXX")).string();
  const bool isPlain = directory.find_first_of("%,") == std::string::npos; // they have a meaning in the variable
  return !error && isPlain && mkdtemp(directory.data()) ? directory + "/" : "";
}

} // namespace

void TOwnTrace::Begin(char** arguments)
{
  if (std::getenv(kVariable)) return; // NOLINT(concurrency-mt-unsafe): one thread
  const bool isHere = access(".", W_OK | X_OK) == 0;
  const std::string directory = isHere ? "" : TemporaryDirectory();
  if (!isHere && directory.empty()) return;
  setenv(kVariable, (directory + OwnName() + kOptions).c_str(), 1); // NOLINT(concurrency-mt-unsafe): one thread
  execv("/proc/self/exe", arguments);
  unsetenv(kVariable); // NOLINT(concurrency-mt-unsafe): one thread
}

TOwnTrace::TOwnTrace()
{
  const char* const setting = std::getenv(kVariable); // NOLINT(concurrency-mt-unsafe): one thread
  TTraceSettings settings;
  if (!setting || !settings.Parse(setting).empty()) return;
  file_ = settings.FileName();
  isOwn_ = fs::path(file_).filename() == OwnName();
}

TOwnTrace::~TOwnTrace()
{
  if (!isOwn_ || isKept_) return;
  unlink(file_.c_str());
  const fs::path directory = fs::path(file_).parent_path();
  if (directory.filename().string().starts_with(kPrefix)) rmdir(directory.c_str());
}

std::string TOwnTrace::NameInBundle() const
{
  return isOwn_ ? OwnName() : "trace.vxtr"; // the user's may say what it is about
}

double TOwnTrace::Seconds() const
{
  if (!startSeconds_ && !file_.empty()) {
    TraceFormat::TFileHeader header{};
    std::ifstream file(file_, std::ios::binary);
    if (file.read(reinterpret_cast<char*>(&header), sizeof header) &&
        std::memcmp(header.magic, TraceFormat::kFileMagic, sizeof header.magic) == 0)
      startSeconds_ = static_cast<double>(header.startMonotonicNs) * 1e-9;
  }
  if (!startSeconds_) return 0.0;
  timespec now{};
  clock_gettime(CLOCK_MONOTONIC, &now);
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9 - *startSeconds_;
}

// A copy takes its place: the library still writes to the file itself.
std::string TOwnTrace::Keep()
{
  if (!isOwn_ || isKept_) return "";
  TTraceFile trace;
  if (const std::string reason = trace.Read(file_); !reason.empty()) return file_ + ": " + reason;
  const std::string part = file_ + ".part";
  const mode_t mask = umask(0077);
  std::ofstream copy(part, std::ios::binary | std::ios::trunc);
  umask(mask);
  copy.write(reinterpret_cast<const char*>(trace.Bytes().data()), static_cast<std::streamsize>(trace.UsedBytes()));
  copy.close();
  isKept_ = true; // in its whole length, if need be
  if (!copy || rename(part.c_str(), file_.c_str()) != 0) unlink(part.c_str());
  return "";
}

} // namespace vxtool
