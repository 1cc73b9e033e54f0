// SPDX-License-Identifier: MIT
// An image with half as many columns and rows.
#pragma once

#include "tools/ImageData.h"

namespace vxtool {

/// The shape of the image of half the size: what is odd is rounded up.
TImageShape HalvedShape(const TImageShape& shape);
/// Writes the means of 2 x 2 pixels, halves rounded up. At an odd edge, those of the pixels that there are.
void HalveImage(TPixelBytes pixels, const TImageShape& shape, std::span<std::byte> halved);

} // namespace vxtool
