// SPDX-License-Identifier: MIT
// Which build a library is of.
#pragma once

#include <string>

/// The number that the linker gave the library with this address in it, as hexadecimal digits; "" when it has none.
/// Thread-safe.
std::string BuildIdOf(const void* address);
