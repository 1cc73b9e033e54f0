// SPDX-License-Identifier: MIT
// What `vxmcd doctor` looks at.
#pragma once

#include <string>
#include <vector>

namespace vxtool {

/// The words for the areas, in the order in which they are looked at.
inline std::vector<std::string> DoctorAreas()
{
  return {"libraries", "cameras", "permissions", "limits", "disk", "timing", "python"};
}

} // namespace vxtool
