// SPDX-License-Identifier: MIT
// The index of a recorded run: which images are on disk, and what they must look like.
#pragma once

#include "runs/run_format.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

/// The records of spool_index.dat. Each carries a checksum of itself: what does not fit is not a record, and
/// neither is one for an image that the run cannot have or that has a record already. One thread at a time.
class TRunIndex final
{
public:
  using TRecord = RunFormat::TIndexRecord;

  /// Reads the index in a directory, not much more of it than the records of all images that can be. False with Error()
  /// set when it is missing or cannot be read, or was interrupted; the records before a failure are there.
  /// @param imageLimit     numbers of images are below this
  /// @param isInterrupted  asked now and then
  bool Read(const std::string& directory, std::int64_t imageLimit,
            const std::function<bool()>& isInterrupted = {});

  /// Reads what has been added since the last time to the index of a run that is being recorded, as far as it is records.
  /// A later Read() begins anew.
  void ReadAdded(const std::string& directory, std::int64_t imageLimit);

  /// The record of an image, or null.
  const TRecord* Find(std::int64_t image) const;
  /// The first image from @p image on that has a record; INT64_MAX for none.
  std::int64_t NextAt(std::int64_t image) const;
  std::int64_t Count() const { return static_cast<std::int64_t>(records_.size()); }
  /// The number behind the last image that has a record.
  std::int64_t End() const { return records_.empty() ? 0 : static_cast<std::int64_t>(records_.back().number) + 1; }
  /// Pieces of the file that are not records, a short one at its end included.
  std::int64_t Damaged() const { return damaged_; }
  /// Whether there is no index, or something else has its name.
  bool IsMissing() const { return isMissing_; }
  const std::string& Error() const { return error_; }

private:
  std::vector<TRecord>::const_iterator At(std::int64_t image) const;
  /// Of several records for an image the first counts.
  void Add(std::vector<TRecord> records);

  std::vector<TRecord> records_; // by number
  std::uint64_t addedEnd_ = 0;   // in the file, of ReadAdded()
  std::int64_t damaged_ = 0;
  bool isMissing_ = false;
  std::string error_;
};
