// SPDX-License-Identifier: MIT
// How much of a disk a run needs, and how much there is.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

struct TSpoolLayout;

/// Bytes on the disk that a run needs, and those that it finds. A plain value.
struct TSpoolSpace
{
  std::uint64_t neededBytes = 0; ///< for images, index and description, in whole blocks of the file system
  /// For this user. An earlier run in the directory counts as free, since the start removes it.
  std::uint64_t freeBytes = 0;
  std::uint64_t indexBytes = 0; ///< of the index of a run that ends when the disk is full

  bool IsEnough() const { return neededBytes <= freeBytes; }

  /// For a run of @p images images into @p directory, which need not exist yet. Nothing when the file system does not
  /// report its size. Looks at each file of an earlier run. Only a lack of memory makes it throw.
  static std::optional<TSpoolSpace> Measure(const std::string& directory, const TSpoolLayout& layout,
                                            std::uint32_t images);
};
