// SPDX-License-Identifier: MIT
// Result codes of the library as a line for a person.
#pragma once

#include <string>

namespace vxtool {

/// One line: the function that answered, the code, its name, what it means and what to try.
std::string ResultText(const std::string& function, unsigned int code);

} // namespace vxtool
