// SPDX-License-Identifier: MIT
// What the file system under a spool directory can do.
#include "spool/TSpoolVolume.h"

#include "spool/file_writing.h"
#include "spool/TFileDescriptor.h"

#include <array>
#include <fcntl.h>

TSpoolVolume TSpoolVolume::Probe(const std::string& directory)
{
  TSpoolVolume volume;
  if (CheckFileSizeLimit(kAlignment) != 0) return volume;

  const TFileDescriptor buffered(open(directory.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0600));
  volume.preallocates = buffered.IsOpen() && fallocate(buffered.Get(), 0, 0, kAlignment) == 0;

  const TFileDescriptor direct(open(directory.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC | O_DIRECT, 0600));
  alignas(kAlignment) static const std::array<char, kAlignment> block{};
  volume.writesDirectly =
      direct.IsOpen() && pwrite(direct.Get(), block.data(), block.size(), 0) == static_cast<ssize_t>(block.size());
  return volume;
}
