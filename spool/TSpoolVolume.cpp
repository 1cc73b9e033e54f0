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

// File systems where a block that was set aside is there when it is written. Others take the call and set nothing
// aside, or write every block to a new place, so that a mapped file on a full disk would end the program by a signal.
constexpr std::array<unsigned long, 4> kKeepingPromises = {0xEF53 /* ext4 */, 0x58465342 /* xfs */,
                                                           0x01021994 /* tmpfs */, 0xF2F52010 /* f2fs */};

bool KeepsPromises(int file)
{
  struct statfs volume;
  if (fstatfs(file, &volume) != 0) return false;
  return std::ranges::find(kKeepingPromises, static_cast<unsigned long>(volume.f_type)) != kKeepingPromises.end();
}

} // namespace

TSpoolVolume TSpoolVolume::Probe(const std::string& directory)
{
  TSpoolVolume volume;
  if (CheckFileSizeLimit(kAlignment) != 0) return volume;

  const TFileDescriptor buffered(open(directory.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0600));
  volume.preallocates = buffered.IsOpen() && fallocate(buffered.Get(), 0, 0, kAlignment) == 0;
  volume.keepsPromises = volume.preallocates && KeepsPromises(buffered.Get());

  const TFileDescriptor direct(open(directory.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC | O_DIRECT, 0600));
  alignas(kAlignment) static const std::array<char, kAlignment> block{};
  volume.writesDirectly =
      direct.IsOpen() && pwrite(direct.Get(), block.data(), block.size(), 0) == static_cast<ssize_t>(block.size());
  return volume;
}
