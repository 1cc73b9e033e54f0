// SPDX-License-Identifier: MIT
// A disk that fails on request.
#pragma once

#include <atomic>
#include <mutex>
#include <string>
#include <vector>

/// What the system answers while this exists, on every thread. Only one may exist at a time.
class TDiskFaults final
{
public:
  TDiskFaults();
  ~TDiskFaults();
  TDiskFaults(const TDiskFaults&) = delete;
  TDiskFaults& operator=(const TDiskFaults&) = delete;

  enum class Call
  {
    kAllocate, ///< fallocate
    kSyncRange,
    kSyncData, ///< fdatasync
    kSync      ///< fsync
  };

  /// Has @p call fail with @p error on files whose path ends with @p nameEnd, after as many calls as @p successes.
  void Fail(Call call, const std::string& nameEnd, int error, int successes = 0);
  void FailNothing();
  /// Whether there is anything to ask ErrorOf() for, which takes memory.
  bool FailsSometimes();
  /// The error that a call on an open file is to fail with; 0 for none.
  int ErrorOf(Call call, int file);

  std::atomic<int> writesUntilError{-1}; ///< large writes that succeed before one fails with EIO; below 0 all do
  std::atomic<int> writeDelayMs{0};      ///< before each large write
  std::atomic<bool> writesAreCut{false}; ///< a large write takes nothing and then a part, as when signals come
  std::atomic<bool> noSync{false};       ///< nothing is brought to the disk, which saves the time
  std::atomic<long> fileRoom{-1}; ///< offset in each image file behind which the disk is full; below 0 nowhere
  std::atomic<bool> noPreallocation{false};
  std::atomic<bool> noDirectWrites{false};

private:
  struct TRule
  {
    Call call;
    std::string nameEnd;
    int error;
    int successes;
  };
  std::mutex mutex_;
  std::vector<TRule> rules_; // guarded by mutex_
};
