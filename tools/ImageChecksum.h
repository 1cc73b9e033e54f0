// SPDX-License-Identifier: MIT
// The checksum that spooled images are stored with.
#pragma once

#include "tools/ImageData.h"

#include <cstdint>

namespace vxtool {

/// XXH3, 64 bits, seed 0. Reentrant.
std::uint64_t ImageChecksum(TPixelBytes bytes);

} // namespace vxtool
