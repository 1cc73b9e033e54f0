// SPDX-License-Identifier: MIT
// Opening of files that are read to their end.
#include "ini/regular_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

TOpenFile OpenRegularFile(const char* fileName)
{
  const int descriptor = ::open(fileName, O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK);
  if (descriptor < 0) return nullptr;
  struct stat status = {};
  const bool isRegular = ::fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode);
  TOpenFile file(isRegular ? ::fdopen(descriptor, "rb") : nullptr);
  if (!file) ::close(descriptor);
  return file;
}
