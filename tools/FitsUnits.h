// SPDX-License-Identifier: MIT
// Header and table of a FITS cube as the bytes in the file.
#pragma once

#include "tools/ImageData.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace vxtool {

inline constexpr std::size_t kFitsBlockBytes = 2880; // a FITS file is made of these
inline constexpr std::size_t kFitsCardBytes = 80;

/// How far a FITS file is.
struct TFitsProgress
{
  const std::vector<TImageLabel>& labels; ///< of the images written
  bool isComplete = false;
  std::optional<TFrameCounts> counts = std::nullopt; ///< of the run, when they are known
};

/// The primary header, whole blocks. With @p bytes of 0 it has room for what is known later, else it becomes as long as
/// that. The header of a complete file of one image has two axes, and says what the table says of the images of other
/// files. Empty when CFITSIO has failed or there is no room; @p error then says why.
std::vector<std::byte> FitsHeader(const TImageShape& shape, const TRunFacts& facts, const TFitsProgress& progress,
                                  std::size_t bytes, std::string& error);

/// The card of the primary header that gives the number of images, and where it stands: the format fixes the place.
inline constexpr std::size_t kFitsImageCountOffset = 5 * kFitsCardBytes;
std::string FitsImageCountCard(long images);

/// The binary table FRAMES with a row for each label, whole blocks. Empty when CFITSIO has failed.
std::vector<std::byte> FitsFrameTable(const std::vector<TImageLabel>& labels, const TRunFacts& facts,
                                      std::string& error);

} // namespace vxtool
