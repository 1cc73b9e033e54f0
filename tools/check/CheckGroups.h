// SPDX-License-Identifier: MIT
// What `vxmcd check` tries of a camera.
#pragma once

#include <string>
#include <vector>

namespace vxtool {

/// The words for the groups of checks, in the order in which they run.
inline std::vector<std::string> CheckGroups()
{
  return {"life", "describe", "settings", "area", "run", "retrieve", "wait", "cooling", "core"};
}

} // namespace vxtool
