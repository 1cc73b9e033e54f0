// SPDX-License-Identifier: MIT
// Writes the metadata chunks at the end of a frame buffer.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace vxsim {

/// The numbers in a frame's metadata.
struct TFrameMetadata
{
  std::int64_t timestampTicks = 0;
  std::uint32_t widthPixels = 0;
  std::uint32_t heightPixels = 0;
  std::uint32_t strideBytes = 0;
  std::uint32_t encodingIndex = 0; ///< the number of an EPixelEncoding
};

/// Writes the chunk tail. A chunk is its data, then its identifier (CID), then its length (data plus CID), so that
/// the tail is read from the buffer's end downwards: timestamp, frame info, and a chunk with CID 0 that ends the
/// walk before it reaches pixels. Stateless, reentrant.
class TMetadataWriter final
{
public:
  static constexpr std::uint32_t kEndCid = 0;
  static constexpr std::uint32_t kTimestampCid = 1; ///< signed 64-bit ticks
  static constexpr std::uint32_t kFrameInfoCid =
      7; ///< width, height, stride, encoding index; unsigned 32-bit each

  /// Bytes of the whole tail, always the same and a multiple of 8.
  static constexpr std::size_t TailBytes() { return kTailBytes; }

  /// Writes the last TailBytes() of the frame; false, and nothing written, when it is shorter than that.
  static bool Write(std::span<unsigned char> frame, const TFrameMetadata& metadata);

private:
  static constexpr std::size_t kChunkOverheadBytes = 8;
  static constexpr std::size_t kTailBytes =
      (kChunkOverheadBytes + 0) + (kChunkOverheadBytes + 16) + (kChunkOverheadBytes + 8);
};

} // namespace vxsim
