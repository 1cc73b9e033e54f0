// SPDX-License-Identifier: MIT
// Header and table of a FITS cube as the bytes in the file.
#pragma once

#include "tools/ImageData.h"

#include <cstddef>
#include <string>
#include <vector>

namespace vxtool {

inline constexpr std::size_t kFitsBlockBytes = 2880; // a FITS file is made of these
inline constexpr std::size_t kFitsCardBytes = 80;

/// The primary header of a cube with so many images, whole blocks. Its length depends on shape and facts only.
/// Empty when CFITSIO has failed; @p error then says why.
std::vector<std::byte> FitsHeader(const TImageShape& shape, const TRunFacts& facts, const TFrameCounts& counts,
                                  long images, std::string& error);

/// The card of the primary header that gives the number of images, and where it stands: the format fixes the place.
inline constexpr std::size_t kFitsImageCountOffset = 5 * kFitsCardBytes;
std::string FitsImageCountCard(long images);

/// The binary table FRAMES with a row for each label, whole blocks. Empty when CFITSIO has failed.
std::vector<std::byte> FitsFrameTable(const std::vector<TImageLabel>& labels, std::string& error);

} // namespace vxtool
