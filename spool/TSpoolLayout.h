// SPDX-License-Identifier: MIT
// How a run's images are spread over files, and what a caller sets about that.
#pragma once

#include "features/current_core_handle.h"

#include <cstdint>
#include <string>

/// How a run's images are spread over files, and how they get there. A plain value.
struct TSpoolLayout
{
  /// What SetSpool() accepts.
  enum Method
  {
    kImagePerFile = 1,
    kImagesTogether = 3
  };

  std::uint64_t imageSizeBytes = 0;
  std::uint32_t imagesPerPlace = 1; ///< images that are opened, written and closed together
  std::uint32_t placesPerFile = 1;
  /// Whether images wait in their slots for a thread that makes the files and copies them (TQueuedSpooler). Otherwise
  /// the acquisition thread copies them (TThreadedSpooler).
  bool isQueued = false;

  std::uint32_t ImagesPerFile() const { return imagesPerPlace * placesPerFile; }
  std::uint64_t PlaceBytes() const { return imageSizeBytes * imagesPerPlace; }

  /// Files keep to the process's limit for their size, as long as an image does.
  static TSpoolLayout Choose(int method, std::uint64_t imageSizeBytes, std::uint32_t seriesLength);
};

/// What a caller sets about the writing of runs, and what the spool dispatch queue adds for one of them. A plain
/// value.
struct TSpoolSettings
{
  std::string path; ///< a directory, made with its parents
  int method = TSpoolLayout::kImagesTogether;
  int threadCount = 2;
  std::uint64_t slots = 0;        ///< of the ring that the images come from, 0 when that is not known
  int coreHandle = kNoCoreHandle; ///< of the camera that is recorded and that the slots go back to
};
