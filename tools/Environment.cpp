// SPDX-License-Identifier: MIT
// The environment that the tool was started with.
#include "tools/Environment.h"

#include <cstdlib>

namespace vxtool {

std::string Variable(const char* name)
{
  const char* const value = secure_getenv(name);
  return value ? value : "";
}

std::string LogFile()
{
  const std::string log = Variable("VXMCD_LOG");
  const std::size_t colon = log.find(':');
  return colon == std::string::npos ? "" : log.substr(colon + 1);
}

} // namespace vxtool
