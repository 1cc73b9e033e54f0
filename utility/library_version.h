// SPDX-License-Identifier: MIT
// The library's version, of which the build, the packages and the Python package take theirs.
#pragma once

/// What the version functions report, and what files that the library writes say of their origin.
namespace LibraryVersion {

inline constexpr const char* kText = "2.94.32007.0";

/// The number at a position of the version, from 0.
consteval unsigned int NumberAt(int position)
{
  const char* digit = kText;
  for (; position > 0; ++digit)
    if (*digit == '.') --position;
  unsigned int number = 0;
  for (; *digit >= '0' && *digit <= '9'; ++digit) number = 10 * number + static_cast<unsigned int>(*digit - '0');
  return number;
}

inline constexpr unsigned int kMajor = NumberAt(0);
inline constexpr unsigned int kMinor = NumberAt(1);
inline constexpr unsigned int kBuild = NumberAt(2);
inline constexpr unsigned int kRevision = NumberAt(3);

} // namespace LibraryVersion
