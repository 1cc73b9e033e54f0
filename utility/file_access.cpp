// SPDX-License-Identifier: MIT
// Files and directories by the system's own calls: who closes them, and writing without surprises.
#include "utility/file_access.h"

#include <cerrno>
#include <sys/resource.h>
#include <unistd.h>

int WriteAll(int descriptor, const void* data, std::size_t size, std::uint64_t offset)
{
  const char* next = static_cast<const char*>(data);
  while (size > 0) {
    const ssize_t written = pwrite(descriptor, next, size, static_cast<off_t>(offset));
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) return errno;
    if (written == 0) return ENOSPC; // no error and no progress: nothing more fits
    next += written;
    size -= static_cast<std::size_t>(written);
    offset += static_cast<std::uint64_t>(written);
  }
  return 0;
}

bool IsUnsupported(int error)
{
  return error == EINVAL || error == ENOTSUP || error == ENOSYS;
}

bool IsDiskFull(int error)
{
  return error == ENOSPC || error == EDQUOT;
}

std::uint64_t FileSizeLimit()
{
  rlimit limit{};
  return getrlimit(RLIMIT_FSIZE, &limit) != 0 || limit.rlim_cur == RLIM_INFINITY ? UINT64_MAX : limit.rlim_cur;
}

int CheckFileSizeLimit(std::uint64_t size)
{
  return size > FileSizeLimit() ? EFBIG : 0;
}
