// SPDX-License-Identifier: MIT
// How a run's images are spread over files.
#pragma once

#include <cstdint>

/// How a run's images are spread over files, and on which way they get there. A plain value.
struct TSpoolLayout
{
  /// What SetSpool() accepts.
  enum Method
  {
    kImagePerFile = 1,
    kImagesTogether = 3
  };

  /// The way of the images from ring to disk.
  enum Way
  {
    kThreaded, ///< copied by the acquisition thread, written by launchers: TThreadedSpooler
    kBlocks,   ///< as kThreaded, but handed to the launchers many at a time: TBlockSpooler
    kQueued    ///< copied by a thread of their own, which also makes the files: TCreateAndWriteFileTask
  };

  std::uint64_t imageSizeBytes = 0;
  std::uint32_t imagesPerPlace = 1; ///< images that are opened, written and closed together
  std::uint32_t placesPerFile = 1;
  Way way = kThreaded;

  std::uint32_t ImagesPerFile() const { return imagesPerPlace * placesPerFile; }
  std::uint64_t PlaceBytes() const { return imageSizeBytes * imagesPerPlace; }

  static TSpoolLayout Choose(int method, std::uint64_t imageSizeBytes, std::uint32_t seriesLength);
};
