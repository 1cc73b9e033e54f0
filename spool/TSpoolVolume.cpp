// SPDX-License-Identifier: MIT
// What the file system under a spool directory can do.
#include "spool/TSpoolVolume.h"

#include "spool/file_writing.h"
#include "spool/TFileDescriptor.h"

#include <algorithm>
#include <array>
#include <fcntl.h>
#include <sys/vfs.h>

namespace {

// What file systems that write every block to a new place call themselves. There, blocks that were set aside can
// still be missing when they are needed.
constexpr std::array<unsigned long, 3> kCopyOnWrite = {0x9123683E /* btrfs */, 0xCA451A4E /* bcachefs */,
                                                       0x3434 /* nilfs */};

bool IsCopyOnWrite(int file)
{
  struct statfs volume;
  if (fstatfs(file, &volume) != 0) return true;
  return std::ranges::find(kCopyOnWrite, static_cast<unsigned long>(volume.f_type)) != kCopyOnWrite.end();
}

} // namespace

TSpoolVolume TSpoolVolume::Probe(const std::string& directory)
{
  TSpoolVolume volume;
  if (CheckFileSizeLimit(kAlignment) != 0) return volume;

  const TFileDescriptor buffered(open(directory.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0600));
  volume.preallocates =
      buffered.IsOpen() && !IsCopyOnWrite(buffered.Get()) && fallocate(buffered.Get(), 0, 0, kAlignment) == 0;

  const TFileDescriptor direct(open(directory.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC | O_DIRECT, 0600));
  alignas(kAlignment) static const std::array<char, kAlignment> block{};
  volume.writesDirectly =
      direct.IsOpen() && pwrite(direct.Get(), block.data(), block.size(), 0) == static_cast<ssize_t>(block.size());
  return volume;
}
