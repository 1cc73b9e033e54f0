// SPDX-License-Identifier: MIT
// Some of the pixels of an image, by their values.
#pragma once

#include "tools/ImageData.h"

#include <cstddef>
#include <vector>

namespace vxtool {

/// What a picture shows as black and as white: all but the darkest per mille of the pixels and the brightest half per mille.
inline constexpr double kBlackQuantile = 0.001;
inline constexpr double kWhiteQuantile = 0.9995;

/// Pixels at equal distances, from the first one on. One thread.
class TPixelSample final
{
public:
  TPixelSample(TPixelBytes image, PixelDepth depth, std::size_t mostPixels);

  bool IsEmpty() const { return values_.empty(); }
  /// The value that this part of the pixels lies below, 0 to 1. There have to be pixels.
  double Quantile(double part);

private:
  std::vector<double> values_;
};

} // namespace vxtool
