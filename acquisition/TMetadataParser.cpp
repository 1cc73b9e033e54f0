// SPDX-License-Identifier: MIT
// Finds the metadata chunks at the end of a frame.
#include "acquisition/TMetadataParser.h"

#include "features/TSDK3Exception.h"
#include "utility/TQuorinLibDebugOutput.h"

#include <cstring>

namespace {

constexpr std::int64_t kFieldBytes = 4;                 // length and CID are 32 bits each
constexpr std::int64_t kTrailerBytes = 2 * kFieldBytes; // CID and length

void validatePointer(const unsigned char* _puc_value)
{
  if (_puc_value) return;
  QuorinUtility::TQuorinLibDebugOutput::Output("metadataparser.cpp", __LINE__, "validatePointer",
                                               "Error :_puc_value passed as parameter is NULL\n");
  throw TSDK3Exception("TMetadataParser: Error _puc_value is NULL");
}

std::uint32_t ReadField(const unsigned char* location)
{
  std::uint32_t value = 0;
  std::memcpy(&value, location, sizeof value);
  return value;
}

unsigned char* Before(unsigned char* location, std::int64_t bytes)
{
  return location ? location - bytes : nullptr;
}

} // namespace

TMetadataParser::TChunk TMetadataParser::FindChunk(unsigned char* end, std::int64_t size, std::uint32_t cid) const
{
  unsigned char* const chunkEnd = searchForChunkStartLocation(end, size, cid);
  if (!chunkEnd) return {};
  const std::int64_t length = ReadField(chunkEnd - kFieldBytes);
  const std::int64_t available = size - (end - chunkEnd) - kFieldBytes;
  if (length < kFieldBytes || length > available) return {};
  return {chunkEnd - kFieldBytes - length, length - kFieldBytes};
}

unsigned char* TMetadataParser::GetMetadataLocation(unsigned char* end, std::int64_t size, std::uint32_t cid) const
{
  return FindChunk(end, size, cid).data;
}

unsigned char* TMetadataParser::GetLengthLocation(unsigned char* end, std::int64_t size, std::uint32_t cid) const
{
  return Before(searchForChunkStartLocation(end, size, cid), kFieldBytes);
}

unsigned char* TMetadataParser::GetCIDLocation(unsigned char* end, std::int64_t size, std::uint32_t cid) const
{
  return Before(searchForChunkStartLocation(end, size, cid), kTrailerBytes);
}

// Lengths are not checked: a chunk that is passed over may be anything. Positions are bytes from the frame's start,
// in 64 bits, so every step leads down, and none out of the frame.
unsigned char* TMetadataParser::searchForChunkStartLocation(unsigned char* end, std::int64_t size,
                                                            std::uint32_t cid) const
{
  validatePointer(end);
  std::int64_t position = size;
  while (position >= kTrailerBytes) {
    unsigned char* const chunkEnd = end - (size - position);
    const std::int64_t chunkBytes = std::int64_t{ReadField(chunkEnd - kFieldBytes)} + kFieldBytes;
    const std::uint32_t chunkCid = ReadField(chunkEnd - kTrailerBytes);
    if (chunkCid == cid) return chunkEnd;
    if (chunkCid == 0) return nullptr;
    position -= chunkBytes;
  }
  return nullptr;
}
