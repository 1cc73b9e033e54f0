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

TFrameTimestamp FindFrameTimestamp(const TMetadataParser& parser, unsigned char* frame, std::int64_t size)
{
  if (size < kTickBytes + kTrailerBytes) return {};

  const TMetadataParser::TChunk chunk = parser.FindChunk(frame + size, size, TMetadataParser::kTimestampCid);
  if (!chunk.data || chunk.dataBytes < kTickBytes) return {};
  TFrameTimestamp found{chunk.data};
  std::memcpy(&found.ticks, chunk.data, sizeof found.ticks);
  return found;
}
