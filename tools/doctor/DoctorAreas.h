// SPDX-License-Identifier: MIT
// What `vxmcd doctor` looks at.
#pragma once

#include <array>
#include <string>
#include <vector>

namespace vxtool {

/// The words for the areas, in the order in which they are looked at.
inline constexpr std::array kDoctorAreas = {"libraries", "cameras", "permissions", "limits",
                                            "disk",      "timing",  "python"};

inline std::vector<std::string> DoctorAreas()
{
  return {kDoctorAreas.begin(), kDoctorAreas.end()};
}

} // namespace vxtool
