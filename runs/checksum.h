// SPDX-License-Identifier: MIT
// The checksum of recorded images.
#pragma once

#include <cstddef>
#include <cstdint>

/// XXH3, 64 bits, seed 0 (Yann Collet, xxHash).
std::uint64_t Checksum(const void* data, std::size_t size);
