// SPDX-License-Identifier: MIT
// Memory with bytes in it that no disk or kernel can make less of.
//
// The feature library's VX_QueueBuffer is defined here in front of the real one. A slot that comes to the camera for
// the first time is filled; a camera with the scene "stamp" leaves all but the ends of it as it is.
#pragma once

#include <cstddef>

/// Fills memory with random bytes.
void fillWithNoise(unsigned char* memory, std::size_t size);
