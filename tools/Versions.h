// SPDX-License-Identifier: MIT
// Which version of what is running.
#pragma once

#include <string>
#include <vector>

namespace vxtool {

/// A library of ours that this program has loaded.
struct TLoadedLibrary
{
  std::string name;    ///< "libvxmcd" for example
  std::string version; ///< "" when it is not known
  std::string file;    ///< behind all links; "" when it cannot be told
  std::string buildId; ///< hexadecimal; "" when it has none
};

/// The library and then the feature library. The latter does not report its version; the name of its file has it.
std::vector<TLoadedLibrary> LoadedLibraries();

/// A line each for the tool, the library and the feature library: version, and the file that was loaded.
std::string VersionsText();
/// The file of the library that this program uses; "" when it cannot be told.
std::string LibraryFile();
/// The file of this program.
std::string ProgramFile();

} // namespace vxtool
