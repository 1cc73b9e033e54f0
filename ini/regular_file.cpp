// SPDX-License-Identifier: MIT
// Opening files to read them to their end or to replace them.
#include "ini/regular_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace {

constexpr int kNeverWait = O_CLOEXEC | O_NOCTTY | O_NONBLOCK;

/// Takes ownership of the descriptor.
TOpenFile ToRegularFile(int descriptor, const char* mode)
{
  if (descriptor < 0) return nullptr;
  struct stat status = {};
  const bool isRegular = ::fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode);
  TOpenFile file(isRegular ? ::fdopen(descriptor, mode) : nullptr);
  if (!file) ::close(descriptor);
  if (!isRegular) errno = EINVAL;
  return file;
}

} // namespace

TOpenFile OpenRegularFile(const char* fileName)
{
  return ToRegularFile(::open(fileName, O_RDONLY | kNeverWait), "rb");
}

TOpenFile CreateRegularFile(const char* fileName)
{
  return ToRegularFile(::open(fileName, O_WRONLY | O_CREAT | O_TRUNC | kNeverWait, 0666), "w");
}
