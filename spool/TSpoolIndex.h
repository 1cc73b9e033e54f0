// SPDX-License-Identifier: MIT
// The file that says which images are on disk.
#pragma once

#include "runs/run_format.h"
#include "utility/file_access.h"
#include "utility/TMutex.h"

#include <atomic>
#include <cstdint>
#include <span>
#include <string>

class TSpoolFault;

/// Writes the index of a run: one record for each image that has been written to its file, in the order of these
/// writes. Owned by the run's pipeline, borrows its fault. Append() and Sync() are
/// thread-safe.
class TSpoolIndex final
{
public:
  using TRecord = RunFormat::TIndexRecord;

  explicit TSpoolIndex(TSpoolFault* fault) : fault_(fault) {}

  /// Makes an empty index in @p directory, with blocks for @p reservedBytes of records where these can be had, so that
  /// the images do not take its room. Returns false, with the fault raised, when that fails.
  bool Create(const std::string& directory, std::uint64_t reservedBytes = 0);
  /// Fills in each record's own checksum. Returns how many of the images are recorded: fewer than all, with the fault
  /// raised, when the disk has room for fewer or fails, or when the file has been removed or truncated.
  std::size_t Append(std::span<const TRecord> images);
  /// Syncs the records, without delaying Append(). Returns false, with the fault raised, on failure. Not during
  /// Close().
  bool Sync();
  /// Number of images recorded.
  std::uint64_t Count();
  /// Syncs and closes the file, and frees the blocks without records. Returns false, with the fault raised, on failure.
  bool Close();

private:
  bool CheckUnchanged() REQUIRES(mutex_);
  std::size_t WholeRecordsBehind(std::uint64_t offset) const REQUIRES(mutex_);

  TSpoolFault* fault_;
  std::string path_;
  TMutex mutex_;
  TFileDescriptor file_ GUARDED_BY(mutex_);
  std::uint64_t count_ GUARDED_BY(mutex_) = 0;
  std::atomic<bool> syncFailed_{false};
  bool isSynced_ GUARDED_BY(mutex_) = true; // nothing was appended since the last sync began
};
