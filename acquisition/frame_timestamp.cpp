// SPDX-License-Identifier: MIT
// The camera's clock in a frame's metadata.
#include "acquisition/frame_timestamp.h"

#include "acquisition/TMetadataParser.h"
#include "features/feature_access.h"
#include "features/feature_names.h"

#include <cstring>

namespace {

constexpr std::int64_t kTickBytes = sizeof(std::int64_t);
constexpr std::int64_t kTrailerBytes = 8; // behind the data: CID and length

} // namespace

bool IsMetadataEnabled(int coreHandle)
{
  int enabled = 0;
  return ReadBool(coreHandle, Feature::kMetadataEnable, enabled) == VX_SUCCESS && enabled != 0;
}

const unsigned char* FindFrameTimestamp(const TMetadataParser& parser, unsigned char* frame, std::int64_t size)
{
  if (size < kTickBytes + kTrailerBytes) return nullptr;

  unsigned char* const end = frame + size;
  const unsigned char* const data = parser.GetMetadataLocation(end, size, TMetadataParser::kTimestampCid);
  if (!data) return nullptr;
  const unsigned char* const dataEnd = parser.GetCIDLocation(end, size, TMetadataParser::kTimestampCid);
  return dataEnd - data < kTickBytes ? nullptr : data;
}

std::optional<std::int64_t> FrameTimestamp(const TMetadataParser& parser, unsigned char* frame, std::int64_t size)
{
  const unsigned char* const data = FindFrameTimestamp(parser, frame, size);
  if (!data) return std::nullopt;
  std::int64_t ticks = 0;
  std::memcpy(&ticks, data, sizeof ticks);
  return ticks;
}
