// SPDX-License-Identifier: MIT
// The checksum of recorded images.
#include "runs/checksum.h"

#define XXH_INLINE_ALL
#include <xxhash.h>

std::uint64_t Checksum(const void* data, std::size_t size)
{
  return XXH3_64bits(data, size);
}
