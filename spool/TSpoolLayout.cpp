// SPDX-License-Identifier: MIT
// How a run's images are spread over files, and what a caller sets about that.
#include "spool/TSpoolLayout.h"

#include "utility/file_access.h"

#include <algorithm>

namespace {

constexpr std::uint64_t kFileBytes = std::uint64_t{256} << 20;

// Images up to this size share a place: to wake another thread for each would take longer than to copy it.
constexpr std::uint64_t kSmallImageBytes = std::uint64_t{256} << 10;

// From this size on, staging memory is in huge pages, which saves about a fifth of the time to the disk.
// Larger ones gain next to nothing, and a run that is killed loses the images of a place that is not full.
constexpr std::uint64_t kSharedPlaceBytes = std::uint64_t{4} << 20;

/// How many pieces of @p size go into @p room, between one and @p max.
std::uint32_t CountIn(std::uint64_t room, std::uint64_t size, std::uint64_t max)
{
  return static_cast<std::uint32_t>(std::clamp<std::uint64_t>(room / size, 1, std::max<std::uint64_t>(max, 1)));
}

} // namespace

TSpoolLayout TSpoolLayout::Choose(int method, std::uint64_t imageSizeBytes, std::uint32_t seriesLength)
{
  const std::uint64_t maxFileBytes = FileSizeLimit();
  TSpoolLayout layout;
  layout.imageSizeBytes = imageSizeBytes;
  layout.isQueued = method == kImagePerFile;
  if (layout.isQueued) return layout;
  if (imageSizeBytes <= kSmallImageBytes)
    layout.imagesPerPlace = CountIn(std::min(kSharedPlaceBytes, maxFileBytes), imageSizeBytes, seriesLength);
  const std::uint64_t placesOfRun = (seriesLength + layout.imagesPerPlace - 1) / layout.imagesPerPlace;
  layout.placesPerFile = CountIn(std::min(kFileBytes, maxFileBytes), layout.PlaceBytes(), placesOfRun);
  return layout;
}
