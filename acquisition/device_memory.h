// SPDX-License-Identifier: MIT
// Looking into memory that a camera may be writing.
#pragma once

#include <cstddef>

/// Whether @p memory has these bytes now. The camera may be replacing them: a device writes its buffers when it likes,
/// and no lock or atomic of ours orders that. Each byte is read once.
bool DeviceMemoryEquals(const unsigned char* memory, const void* bytes, std::size_t size);
