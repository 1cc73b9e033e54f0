// SPDX-License-Identifier: MIT
// What the file system under a spool directory can do.
#pragma once

#include <cstddef>
#include <string>

/// What the file system under a spool directory can do. A plain value.
struct TSpoolVolume
{
  /// Memory and file offsets of unbuffered writes are multiples of this.
  static constexpr std::size_t kAlignment = 4096;

  bool writesDirectly = false; ///< takes unbuffered writes
  bool preallocates = false;   ///< takes calls that set blocks aside for a file before they are written

  /// Tries them on a file without a name in @p directory. Where that is not possible either, the answer is no.
  static TSpoolVolume Probe(const std::string& directory);
};
