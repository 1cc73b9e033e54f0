// SPDX-License-Identifier: MIT
// Writes the metadata chunks at the end of a frame buffer.
#include "vxcore/simulated/imaging/TMetadataWriter.h"

#include <cstring>

namespace vxsim {
namespace {

constexpr std::uint32_t kCidBytes = 4;

/// Appends one chunk at the position and moves the position behind it.
void PutChunk(unsigned char*& position, std::uint32_t cid, const void* data, std::uint32_t dataBytes)
{
  const std::uint32_t length = dataBytes + kCidBytes;
  if (dataBytes != 0) std::memcpy(position, data, dataBytes);
  std::memcpy(position + dataBytes, &cid, sizeof cid);
  std::memcpy(position + dataBytes + sizeof cid, &length, sizeof length);
  position += dataBytes + sizeof cid + sizeof length;
}

} // namespace

bool TMetadataWriter::Write(std::span<unsigned char> frame, const TFrameMetadata& metadata)
{
  if (frame.size() < kTailBytes) return false;
  const std::uint32_t info[] = {metadata.widthPixels, metadata.heightPixels, metadata.strideBytes,
                                metadata.encodingIndex};
  unsigned char* position = frame.data() + (frame.size() - kTailBytes);
  PutChunk(position, kEndCid, nullptr, 0);
  PutChunk(position, kFrameInfoCid, info, sizeof info);
  PutChunk(position, kTimestampCid, &metadata.timestampTicks, sizeof metadata.timestampTicks);
  return true;
}

} // namespace vxsim
