// SPDX-License-Identifier: MIT
// The camera's clock in a frame's metadata.
#pragma once

#include <cstdint>
#include <optional>

class TMetadataParser;

/// Whether that camera adds metadata to its frames. One that does not know of it has none.
bool IsMetadataEnabled(int coreHandle);

/// Where the ticks of the timestamp chunk of a frame of @p size bytes are, as 8 bytes of any alignment; null for a
/// frame without one. A frame that makes no sense has none.
const unsigned char* FindFrameTimestamp(const TMetadataParser& parser, unsigned char* frame, std::int64_t size);

/// The ticks of the timestamp chunk of a frame of @p size bytes, or nothing for a frame without one.
std::optional<std::int64_t> FrameTimestamp(const TMetadataParser& parser, unsigned char* frame, std::int64_t size);
