// SPDX-License-Identifier: MIT
// Finds the metadata chunks at the end of a frame.
#pragma once

#include <cstdint>

/// Walks the chunks at the end of a frame buffer. From lower to higher addresses a chunk is its data, its
/// identifier (CID) and its length, both unsigned 32-bit; the length counts data and CID. The chunks follow each other
/// without gaps, the last one ending with the buffer, and CID 0 ends the search. `end` is the first byte behind the
/// frame and `size` its bytes; a null `end` throws TSDK3Exception. Only the end of the frame's memory ends the search
/// otherwise: the lengths of the chunks passed over are not checked. Reentrant, without state.
class TMetadataParser final
{
public:
  static constexpr std::uint32_t kTimestampCid = 1;

  /// The data of a chunk; null without one, or when its length does not cover the identifier or reaches beyond the
  /// frame.
  struct TChunk
  {
    unsigned char* data = nullptr;
    std::int64_t dataBytes = 0;
  };

  TChunk FindChunk(unsigned char* end, std::int64_t size, std::uint32_t cid) const;

  /// Where the data of FindChunk() is, or null.
  unsigned char* GetMetadataLocation(unsigned char* end, std::int64_t size, std::uint32_t cid) const;
  /// Where that chunk's length is, or null.
  unsigned char* GetLengthLocation(unsigned char* end, std::int64_t size, std::uint32_t cid) const;
  /// Where that chunk's identifier is, or null.
  unsigned char* GetCIDLocation(unsigned char* end, std::int64_t size, std::uint32_t cid) const;
  /// The address behind that chunk, or null.
  unsigned char* searchForChunkStartLocation(unsigned char* end, std::int64_t size, std::uint32_t cid) const;
};
