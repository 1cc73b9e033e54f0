// SPDX-License-Identifier: MIT
// The camera's clock in a frame's metadata.
#pragma once

#include <cstdint>

class TMetadataParser;

/// Whether that camera adds metadata to its frames. One that does not know of it has none.
bool IsMetadataEnabled(int coreHandle);

/// The camera's clock value in a frame, and where it is, as 8 bytes of any alignment. A plain value, passed as such:
/// that takes two registers, while reading it back from memory just after it was written stalls.
struct TFrameTimestamp
{
  const unsigned char* location = nullptr; ///< null for a frame without one
  std::int64_t ticks = 0;
};

/// The timestamp chunk of a frame of @p size bytes. A frame that makes no sense has none.
TFrameTimestamp FindFrameTimestamp(const TMetadataParser& parser, unsigned char* frame, std::int64_t size);
