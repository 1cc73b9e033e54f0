// SPDX-License-Identifier: MIT
// The directory that a benchmark writes into.
#pragma once

#include <cstdint>
#include <string>

/// A directory of the process's own, removed with all that is in it when the process ends normally. It is made in the
/// directory that VXMCD_BENCHMARK_DIRECTORY names, or else in the working directory.
class BenchmarkDirectory
{
public:
  /// The process's one.
  static const BenchmarkDirectory& get();

  const std::string& path() const { return path_; }
  std::uint64_t freeBytes() const;
  /// Removes what is in it, and waits until the disk has nothing left to do for anybody.
  void clear() const;

  BenchmarkDirectory(const BenchmarkDirectory&) = delete;
  BenchmarkDirectory& operator=(const BenchmarkDirectory&) = delete;

private:
  BenchmarkDirectory();
  ~BenchmarkDirectory();

  std::string path_;
};
