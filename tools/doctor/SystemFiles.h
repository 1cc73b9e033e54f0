// SPDX-License-Identifier: MIT
// Short texts that the system has in files.
#pragma once

#include <string>

namespace vxtool {

/// The first line; "" when the file cannot be read or is empty.
std::string FirstLineOf(const std::string& path);
/// "1.2 GB", "300 MB", "64 kB"; powers of 1000.
std::string BytesText(double bytes);

} // namespace vxtool
