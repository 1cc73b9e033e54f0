// SPDX-License-Identifier: MIT
// What several areas need: short files of the system, and numbers of bytes in words.
#pragma once

#include <string>

namespace vxtool {

/// The first line; "" when the file cannot be read or is empty.
std::string FirstLineOf(const std::string& path);
/// "1.2 GB", "300 MB", "64 kB"; powers of 1000.
std::string BytesText(double bytes);

} // namespace vxtool
