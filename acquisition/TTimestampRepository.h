// SPDX-License-Identifier: MIT
// The camera's tick count at each frame of a run.
#pragma once

#include "acquisition/TVXSystemTime.h"
#include "utility/TQuorinCriticalSection.h"

#include <cstdint>
#include <vector>

/// Keeps the newest timestamps of a run, one for each delivered frame, and when the first of them came. Owned by
/// the acquisition manager for one run. Thread-safe: the acquisition thread adds, application threads read. Memory
/// for the full capacity is reserved at construction, so adding never allocates.
class TTimestampRepository final
{
public:
  static constexpr std::uint64_t kDefaultCapacity = 1000000;

  TTimestampRepository() : TTimestampRepository(kDefaultCapacity) {}
  explicit TTimestampRepository(std::uint64_t capacity);

  void AddTimestamp(std::int64_t ticks);
  /// Timestamp number @p index of the run, from 0. Returns 0, or 1 when it is not there (any more).
  int GetTimestamp(std::uint64_t index, std::int64_t& ticks) const;

  /// How many timestamps were ever added.
  std::uint64_t Throughput() const;
  std::int64_t GetTimestampForFirstFrame() const;
  TVXSystemTime GetTimeOfDayForFirstFrame() const;
  std::uint64_t Capacity() const;
  /// How many timestamps are there.
  std::uint64_t CurrentSize() const;

private:
  mutable QuorinUtility::TQuorinCriticalSection lock_;
  TVXSystemTime firstTimeOfDay_ GUARDED_BY(lock_);
  std::int64_t firstTimestamp_ GUARDED_BY(lock_) = 0;
  std::vector<std::int64_t> timestamps_ GUARDED_BY(lock_);
  const std::uint64_t capacity_;
  std::uint64_t count_ GUARDED_BY(lock_) = 0;
};
