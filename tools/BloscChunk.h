// SPDX-License-Identifier: MIT
// Compresses pixels with Blosc, and says how, for the texts of a format.
#pragma once

#include "tools/ImageData.h"
#include "tools/Options.h"

namespace vxtool {

/// How a chunk of pixels is compressed, in Blosc's own terms.
struct TBloscChunk
{
  const char* codec = nullptr; ///< Blosc's name for it
  int level = 0;
  int shuffle = 0;
  int threads = 1;
  std::size_t pixelBytes = 0;

  TBloscChunk(const TCompression& compression, PixelDepth depth, int threadCount);
  /// The number of the codec in the format of compressed chunks.
  unsigned CodecNumber() const;
  /// Compresses into @p buffer, which is made large enough. Empty when Blosc cannot, which it does of chunks of 2 GiB.
  TPixelBytes Compress(TPixelBytes pixels, std::vector<std::byte>& buffer) const;
};

/// The largest chunk in bytes.
extern const std::size_t kMaxBloscBytes;

} // namespace vxtool
