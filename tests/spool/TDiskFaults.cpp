// SPDX-License-Identifier: MIT
// A disk that fails on request.
#include "tests/spool/TDiskFaults.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdarg>
#include <fcntl.h>
#include <filesystem>
#include <sys/types.h>
#include <thread>

namespace {

std::atomic<TDiskFaults*> faults{nullptr};

// Images, as opposed to the index and to the pages at an image's ends.
constexpr std::size_t kLargeWrite = 8192;

using Call = TDiskFaults::Call;

/// Sets errno, and says whether the call fails.
bool Fails(Call call, int file)
{
  TDiskFaults* const disk = faults;
  const int error = disk && disk->FailsSometimes() ? disk->ErrorOf(call, file) : 0;
  if (error != 0) errno = error;
  return error != 0;
}

std::string PathOf(int file)
{
  std::error_code none;
  return std::filesystem::read_symlink("/proc/self/fd/" + std::to_string(file), none).string();
}

/// How much of this part of a file the disk has room for. Sets errno when that is nothing.
std::size_t RoomFor(int file, off_t offset, std::size_t size)
{
  const long room = faults ? faults.load()->fileRoom.load() : -1;
  if (room < 0 || PathOf(file).find("/spool_0") == std::string::npos) return size;
  errno = ENOSPC;
  return static_cast<std::size_t>(std::clamp<long>(room - offset, 0, static_cast<long>(size)));
}

bool IsWithoutSync()
{
  const TDiskFaults* const disk = faults;
  return disk && disk->noSync;
}

} // namespace

TDiskFaults::TDiskFaults()
{
  faults = this;
}

TDiskFaults::~TDiskFaults()
{
  faults = nullptr;
}

void TDiskFaults::Fail(Call call, const std::string& nameEnd, int error, int successes)
{
  const std::lock_guard lock(mutex_);
  rules_.push_back({call, nameEnd, error, successes});
}

void TDiskFaults::FailNothing()
{
  const std::lock_guard lock(mutex_);
  rules_.clear();
}

bool TDiskFaults::FailsSometimes()
{
  const std::lock_guard lock(mutex_);
  return !rules_.empty();
}

int TDiskFaults::ErrorOf(Call call, int file)
{
  const std::string path = PathOf(file);
  const std::lock_guard lock(mutex_);
  for (TRule& rule : rules_)
    if (rule.call == call && path.ends_with(rule.nameEnd) && rule.successes-- <= 0) return rule.error;
  return 0;
}

extern "C" {
ssize_t __real_pwrite(int file, const void* data, std::size_t size, off_t offset);
ssize_t __wrap_pwrite(int file, const void* data, std::size_t size, off_t offset);
int __real_fdatasync(int file);
int __wrap_fdatasync(int file);
int __real_sync_file_range(int file, off_t offset, off_t size, unsigned int flags);
int __wrap_sync_file_range(int file, off_t offset, off_t size, unsigned int flags);
int __real_fsync(int file);
int __wrap_fsync(int file);
int __real_fallocate(int file, int mode, off_t offset, off_t size);
int __wrap_fallocate(int file, int mode, off_t offset, off_t size);
int __real_open(const char* path, int flags, ...);
int __wrap_open(const char* path, int flags, ...);

ssize_t __wrap_pwrite(int file, const void* data, std::size_t size, off_t offset)
{
  if (size > 0 && (size = RoomFor(file, offset, size)) == 0) return -1;
  TDiskFaults* const disk = faults;
  if (!disk || size < kLargeWrite) return __real_pwrite(file, data, size, offset);
  std::this_thread::sleep_for(std::chrono::milliseconds(disk->writeDelayMs));
  if (disk->writesUntilError >= 0 && disk->writesUntilError-- == 0) {
    errno = EIO;
    return -1;
  }
  if (!disk->writesAreCut) return __real_pwrite(file, data, size, offset);
  static std::atomic<unsigned int> cuts{0};
  if (cuts++ % 2 == 1) return __real_pwrite(file, data, kLargeWrite / 2, offset);
  errno = EINTR;
  return -1;
}

int __wrap_fdatasync(int file)
{
  if (IsWithoutSync()) return 0;
  return Fails(Call::kSyncData, file) ? -1 : __real_fdatasync(file);
}

int __wrap_sync_file_range(int file, off_t offset, off_t size, unsigned int flags)
{
  if (IsWithoutSync()) return 0;
  return Fails(Call::kSyncRange, file) ? -1 : __real_sync_file_range(file, offset, size, flags);
}

int __wrap_fsync(int file)
{
  if (IsWithoutSync()) return 0;
  return Fails(Call::kSync, file) ? -1 : __real_fsync(file);
}

int __wrap_fallocate(int file, int mode, off_t offset, off_t size)
{
  if (Fails(Call::kAllocate, file)) return -1;
  const TDiskFaults* const disk = faults;
  if (RoomFor(file, offset, static_cast<std::size_t>(size)) < static_cast<std::size_t>(size)) return -1;
  if (!disk || !disk->noPreallocation) return __real_fallocate(file, mode, offset, size);
  errno = EOPNOTSUPP;
  return -1;
}

int __wrap_open(const char* path, int flags, ...)
{
  std::va_list arguments;
  va_start(arguments, flags);
  const int mode = va_arg(arguments, int);
  va_end(arguments);
  const TDiskFaults* const disk = faults;
  if (!disk || !disk->noDirectWrites || (flags & O_DIRECT) == 0) return __real_open(path, flags, mode);
  errno = EINVAL;
  return -1;
}
}
