// SPDX-License-Identifier: MIT
// Describes a spooled run in its directory.
#pragma once

#include "spool/TAcquisitionMetadata.h"

#include <cstdint>
#include <optional>
#include <string>

struct TSpoolLayout;

/// Fills "acquisitionmetadata.ini" for one run: everything that a reader needs to decode the images without the
/// camera. Owned by the run's pipeline. One thread at a time.
class TSpoolDescription final
{
public:
  /// At least the size of the file.
  static constexpr std::uint64_t kMaxBytes = 16384;

  /// How a run has ended.
  struct TOutcome
  {
    std::uint64_t imagesWritten = 0;
    bool completed = false;
    std::string failure; ///< empty when nothing failed
    std::optional<std::int64_t> firstFrameTimeNs;
    std::optional<std::int64_t> firstFrameTick;
  };

  /// Reads the settings of the camera @p coreHandle, those that it has.
  void Gather(int coreHandle, int method, std::uint32_t seriesLength);
  /// Describes the run that begins. Returns false, with the reason in errno, when anything but a setting of the camera
  /// is missing or the file could not be written.
  bool Begin(const std::string& directory, const TSpoolLayout& layout);
  /// Completes the description, in the file @p reserved as TAcquisitionMetadata::SaveFile() has it. Returns false,
  /// with the reason in errno, when that failed.
  bool End(const TOutcome& outcome, int reserved);

private:
  int method_ = 0;
  std::uint32_t seriesLength_ = 0;
  std::string directory_;
  TAcquisitionMetadata metadata_;
};
