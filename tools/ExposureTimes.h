// SPDX-License-Identifier: MIT
// When the images of a file were exposed.
#pragma once

#include "tools/ImageData.h"

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace vxtool {

/// What is known of the times of some images. By the host's clock, in ns since 1970-01-01 UTC.
struct TExposureTimes
{
  std::optional<std::int64_t> start;          ///< of the first exposure of the first image
  std::optional<std::int64_t> end;            ///< of the last exposure of the last image
  std::vector<std::optional<double>> seconds; ///< from the start of the first image's to that of each image's
  bool HasSeconds() const;
};

/// The camera's clock says how far exposures are apart, where its rate is known; else the host's clock at which the
/// images arrived does. An exposure ends about the time that reading it out takes before its image arrives.
TExposureTimes ExposureTimesOf(std::span<const TImageLabel> labels, const TRunFacts& facts);

} // namespace vxtool
