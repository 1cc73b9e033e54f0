// SPDX-License-Identifier: MIT
// Memory for images on their way to the disk.
#pragma once

#include <cstddef>
#include <mutex>
#include <vector>

/// Page-aligned pieces of memory, all of one size, used again and again so that their pages are in place. Owned by
/// the run's pipeline, and outlives all pieces in use. Thread-safe.
class TStagingPool final
{
public:
  explicit TStagingPool(std::size_t sizeBytes);
  ~TStagingPool();
  TStagingPool(const TStagingPool&) = delete;
  TStagingPool& operator=(const TStagingPool&) = delete;

  /// A piece to use until Release(), or null when there is no memory. Its content is what was in it before.
  unsigned char* Acquire();
  void Release(unsigned char* piece);

private:
  const std::size_t sizeBytes_;
  std::mutex mutex_;
  std::size_t pieces_ = 0;            // guarded by mutex_
  std::vector<unsigned char*> spare_; // guarded by mutex_, with room for all pieces
};
