// SPDX-License-Identifier: MIT
// The checksum by way of xxHash's header.
#include "tools/ImageChecksum.h"

#define XXH_INLINE_ALL
#include <xxhash.h>

namespace vxtool {

std::uint64_t ImageChecksum(TPixelBytes bytes)
{
  return XXH3_64bits(bytes.data(), bytes.size());
}

} // namespace vxtool
