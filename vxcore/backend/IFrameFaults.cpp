// SPDX-License-Identifier: MIT
// Faults in the bytes of a delivered frame.
#include "vxcore/backend/IFrameFaults.h"

#include <algorithm>
#include <cstring>
#include <random>

namespace vxcore {

namespace {

constexpr int kTruncatedBytes = 6;  ///< cuts through the last chunk's identifier
constexpr int kChunkWordsBytes = 8; ///< identifier and length end a chunk

} // namespace

void ApplyToDelivered(const TPlannedFault& fault, unsigned char* bytes, int wholeBytes, int metadataBytes,
                      int& sizeBytes)
{
  unsigned char* end = bytes + wholeBytes;
  const auto word = static_cast<uint32_t>(fault.number);
  const bool hasChunk = wholeBytes >= kChunkWordsBytes;
  switch (fault.kind) {
  case EPlannedFault::Short:
    sizeBytes = static_cast<int>(fault.number);
    break;
  case EPlannedFault::Oversize:
    sizeBytes = static_cast<int>(wholeBytes + fault.number);
    break;
  case EPlannedFault::ChunkLength:
    if (hasChunk) std::memcpy(end - 4, &word, sizeof word);
    break;
  case EPlannedFault::ChunkCid:
    if (hasChunk) std::memcpy(end - 8, &word, sizeof word);
    break;
  case EPlannedFault::ChunkTruncated:
    sizeBytes = std::max(0, wholeBytes - kTruncatedBytes);
    break;
  case EPlannedFault::ChunkRandom: {
    std::mt19937_64 generator(static_cast<uint64_t>(fault.number));
    for (unsigned char* byte = end - std::min(metadataBytes, wholeBytes); byte < end; ++byte) {
      *byte = static_cast<unsigned char>(generator());
    }
    break;
  }
  default:
    break;
  }
}

} // namespace vxcore
