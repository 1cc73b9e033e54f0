// SPDX-License-Identifier: MIT
// How a run's images are spread over files.
#include "spool/TSpoolLayout.h"

#include <algorithm>

namespace {

constexpr std::uint64_t kFileBytes = std::uint64_t{256} << 20;

// Images up to this size go in blocks: handing each to another thread would take longer than copying it.
constexpr std::uint64_t kSmallImageBytes = std::uint64_t{256} << 10;

// From here on staging memory lies in huge pages, which saves about a fifth of the time to the disk.
// Larger ones gain next to nothing, and a run that is killed loses the images of a block that is not full.
constexpr std::uint64_t kBlockBytes = std::uint64_t{4} << 20;

std::uint32_t HowMany(std::uint64_t room, std::uint64_t size, std::uint64_t most)
{
  return static_cast<std::uint32_t>(std::clamp<std::uint64_t>(room / size, 1, std::max<std::uint64_t>(most, 1)));
}

} // namespace

TSpoolLayout TSpoolLayout::Choose(int method, std::uint64_t imageSizeBytes, std::uint32_t seriesLength)
{
  const bool small = imageSizeBytes <= kSmallImageBytes;
  TSpoolLayout layout;
  layout.imageSizeBytes = imageSizeBytes;
  if (method == kImagePerFile) {
    layout.way = kQueued;
    return layout;
  }
  if (small) {
    layout.way = kBlocks;
    layout.imagesPerPlace = HowMany(kBlockBytes, imageSizeBytes, seriesLength);
  }
  const std::uint64_t placesOfRun = (seriesLength + layout.imagesPerPlace - 1) / layout.imagesPerPlace;
  layout.placesPerFile = HowMany(kFileBytes, layout.PlaceBytes(), placesOfRun);
  return layout;
}
