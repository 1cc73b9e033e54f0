// SPDX-License-Identifier: MIT
// Turns the wide range of a camera image into 256 grey levels.
#pragma once

#include "tools/ImageData.h"

#include <vector>

namespace vxtool {

/// 8-bit grey levels of an image. Black is the darkest per mille of the pixels and white the brightest half per
/// mille. Between them the scale is linear, or, when the median lies within the lowest tenth (few bright things on
/// a dark background, as stars are), compressed by an inverse hyperbolic sine so that faint things show.
/// Reentrant.
std::vector<unsigned char> StretchImage(TPixelBytes pixels, PixelDepth depth);

} // namespace vxtool
