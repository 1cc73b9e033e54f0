// SPDX-License-Identifier: MIT
// The range of pixels that a viewer shows from black to white.
#pragma once

#include "tools/ImageData.h"

#include <algorithm>
#include <cstdint>

namespace vxtool {

/// Spans the pixels of the images that it has seen, but for the darkest and the brightest of each. Looks at some of the
/// pixels only. One thread at a time.
class TDisplayWindow final
{
public:
  void Add(TPixelBytes image, PixelDepth depth);
  /// Black and white, which differ; those of all pixels before the first image.
  double Start(PixelDepth depth) const { return isEmpty_ ? Least(depth) : start_; }
  double End(PixelDepth depth) const { return isEmpty_ ? Most(depth) : std::max(end_, start_ + 1.0); }
  /// The range of pixels of this depth.
  static double Least(PixelDepth depth) { return depth == PixelDepth::Bits32 ? INT32_MIN : 0; }
  static double Most(PixelDepth depth)
  {
    return depth == PixelDepth::Bits32 ? INT32_MAX : depth == PixelDepth::Bits16 ? UINT16_MAX : UINT8_MAX;
  }

private:
  bool isEmpty_ = true;
  double start_ = 0.0;
  double end_ = 0.0;
};

} // namespace vxtool
