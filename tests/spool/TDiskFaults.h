// SPDX-License-Identifier: MIT
// A disk that fails on request.
#pragma once

#include <atomic>

/// What the system answers while this exists, on every thread. Only one may exist at a time.
class TDiskFaults final
{
public:
  TDiskFaults();
  ~TDiskFaults();
  TDiskFaults(const TDiskFaults&) = delete;
  TDiskFaults& operator=(const TDiskFaults&) = delete;

  std::atomic<int> writesUntilError{-1};  ///< large writes that succeed before one fails with EIO; below 0 all do
  std::atomic<int> writeDelayMs{0};       ///< before each large write
  std::atomic<bool> writesAreCut{false};  ///< a large write takes only a part, as when a signal comes
  std::atomic<bool> syncFails{false};     ///< fdatasync and syncfs fail with EIO
  std::atomic<bool> noSync{false};        ///< nothing is brought to the disk, which saves the time
  std::atomic<int> directorySyncError{0}; ///< what fsync of a directory fails with
  std::atomic<long> fileSystem{0xEF53};   ///< what every file system calls itself: ext4
  std::atomic<bool> noPreallocation{false};
  std::atomic<bool> noDirectWrites{false};
  std::atomic<bool> noMapping{false};
};
