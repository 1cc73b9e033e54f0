// SPDX-License-Identifier: MIT
// Variables of the tool's environment.
#pragma once

#include <string>

namespace vxtool {

/// "" when it is not set.
std::string Variable(const char* name);
/// The file that VXMCD_LOG names; "" when the diagnostic log goes to no file.
std::string LogFile();

} // namespace vxtool
