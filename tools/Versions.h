// SPDX-License-Identifier: MIT
// Which version of what is running.
#pragma once

#include <string>

namespace vxtool {

/// A line each for the tool, the library and the feature library: version, and the file that was loaded. The feature
/// library does not report its version; the name of its file has it.
std::string VersionsText();
/// The file of the library that this program uses; "" when it cannot be told.
std::string LibraryFile();
/// The file of this program.
std::string ProgramFile();

} // namespace vxtool
