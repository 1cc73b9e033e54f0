// SPDX-License-Identifier: MIT
// Blosc without its global state, which would not survive several callers.
#include "tools/BloscChunk.h"

#include <blosc.h>

namespace vxtool {

const std::size_t kMaxBloscBytes = BLOSC_MAX_BUFFERSIZE;

TBloscChunk::TBloscChunk(const TCompression& compression, PixelDepth depth, int threadCount)
    : codec(compression.codec == Codec::Lz4 ? BLOSC_LZ4_COMPNAME : BLOSC_ZSTD_COMPNAME),
      level(compression.level),
      shuffle(depth == PixelDepth::Bits8        ? BLOSC_NOSHUFFLE
              : compression.codec == Codec::Lz4 ? BLOSC_BITSHUFFLE
                                                : BLOSC_SHUFFLE),
      threads(threadCount),
      pixelBytes(static_cast<std::size_t>(depth) / 8)
{
}

unsigned TBloscChunk::CodecNumber() const
{
  return static_cast<unsigned>(blosc_compname_to_compcode(codec));
}

TPixelBytes TBloscChunk::Compress(TPixelBytes pixels, std::vector<std::byte>& buffer) const
{
  buffer.resize(pixels.size() + BLOSC_MAX_OVERHEAD);
  const int size = blosc_compress_ctx(level, shuffle, pixelBytes, pixels.size(), pixels.data(), buffer.data(),
                                      buffer.size(), codec, 0, threads);
  return TPixelBytes(buffer).first(size > 0 ? static_cast<std::size_t>(size) : 0);
}

} // namespace vxtool
