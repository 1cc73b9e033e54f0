// SPDX-License-Identifier: MIT
// A disk that fails on request.
#include "tests/spool/TDiskFaults.h"

#include <cerrno>
#include <chrono>
#include <cstdarg>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <sys/vfs.h>
#include <thread>

namespace {

std::atomic<TDiskFaults*> faults{nullptr};

// Images, as opposed to the index and to the pages at an image's ends.
constexpr std::size_t kLargeWrite = 8192;

} // namespace

TDiskFaults::TDiskFaults()
{
  faults = this;
}

TDiskFaults::~TDiskFaults()
{
  faults = nullptr;
}

extern "C" {
ssize_t __real_pwrite(int file, const void* data, std::size_t size, off_t offset);
ssize_t __wrap_pwrite(int file, const void* data, std::size_t size, off_t offset);
int __real_fdatasync(int file);
int __wrap_fdatasync(int file);
int __real_syncfs(int file);
int __wrap_syncfs(int file);
int __real_fsync(int file);
int __wrap_fsync(int file);
int __real_fstatfs(int file, struct statfs* system);
int __wrap_fstatfs(int file, struct statfs* system);
int __real_fallocate(int file, int mode, off_t offset, off_t size);
int __wrap_fallocate(int file, int mode, off_t offset, off_t size);
void* __real_mmap(void* address, std::size_t size, int protection, int flags, int file, off_t offset);
void* __wrap_mmap(void* address, std::size_t size, int protection, int flags, int file, off_t offset);
int __real_open(const char* path, int flags, ...);
int __wrap_open(const char* path, int flags, ...);

ssize_t __wrap_pwrite(int file, const void* data, std::size_t size, off_t offset)
{
  TDiskFaults* const disk = faults;
  if (!disk || size < kLargeWrite) return __real_pwrite(file, data, size, offset);
  std::this_thread::sleep_for(std::chrono::milliseconds(disk->writeDelayMs));
  if (disk->writesUntilError >= 0 && disk->writesUntilError-- == 0) {
    errno = EIO;
    return -1;
  }
  return __real_pwrite(file, data, disk->writesAreCut ? kLargeWrite / 2 : size, offset);
}

int __wrap_fdatasync(int file)
{
  TDiskFaults* const disk = faults;
  if (disk && disk->noSync) return 0;
  if (!disk || !disk->syncFails) return __real_fdatasync(file);
  errno = EIO;
  return -1;
}

int __wrap_syncfs(int file)
{
  TDiskFaults* const disk = faults;
  if (disk && disk->noSync) return 0;
  if (!disk || !disk->syncFails) return __real_syncfs(file);
  errno = EIO;
  return -1;
}

int __wrap_fsync(int file)
{
  TDiskFaults* const disk = faults;
  if (disk && disk->noSync) return 0;
  struct stat status = {};
  if (!disk || disk->directorySyncError == 0 || fstat(file, &status) != 0 || !S_ISDIR(status.st_mode))
    return __real_fsync(file);
  errno = disk->directorySyncError;
  return -1;
}

int __wrap_fstatfs(int file, struct statfs* system)
{
  const int result = __real_fstatfs(file, system);
  if (TDiskFaults* const disk = faults) system->f_type = disk->fileSystem;
  return result;
}

int __wrap_fallocate(int file, int mode, off_t offset, off_t size)
{
  TDiskFaults* const disk = faults;
  if (!disk || !disk->noPreallocation) return __real_fallocate(file, mode, offset, size);
  errno = EOPNOTSUPP;
  return -1;
}

void* __wrap_mmap(void* address, std::size_t size, int protection, int flags, int file, off_t offset)
{
  TDiskFaults* const disk = faults;
  if (!disk || !disk->noMapping || (flags & MAP_SHARED) == 0)
    return __real_mmap(address, size, protection, flags, file, offset);
  errno = ENOMEM;
  return MAP_FAILED;
}

int __wrap_open(const char* path, int flags, ...)
{
  std::va_list arguments;
  va_start(arguments, flags);
  const int mode = va_arg(arguments, int);
  va_end(arguments);
  TDiskFaults* const disk = faults;
  if (!disk || !disk->noDirectWrites || (flags & O_DIRECT) == 0) return __real_open(path, flags, mode);
  errno = EINVAL;
  return -1;
}
}
