// SPDX-License-Identifier: MIT
// The library's version.
#pragma once

/// What the version functions report, and what files that the library writes say of their origin.
namespace LibraryVersion {

inline constexpr unsigned int kMajor = 2;
inline constexpr unsigned int kMinor = 94;
inline constexpr unsigned int kBuild = 32007;
inline constexpr unsigned int kRevision = 0;
inline constexpr const char* kText = "2.94.32007.0";

} // namespace LibraryVersion
