// SPDX-License-Identifier: MIT
// Where a stored frame is.
#pragma once

#include <cstdint>

/// The memory of one stored frame; null and 0 for none. A plain value, which owns nothing.
struct TFrameMemory
{
  unsigned char* bytes = nullptr;
  std::int64_t sizeBytes = 0;
};
