// SPDX-License-Identifier: MIT
// The result codes of each entry point, as the comments of the public header state them.
#include "tests/support/DocumentedCodes.h"

#include "vxmcd.h"

#include <map>
#include <set>

namespace {

using TCodes = std::set<unsigned int>;

const std::map<std::string, TCodes> kDocumented = {
#define VXMCD_FUNCTION(name, ...) {#name, TCodes{__VA_ARGS__}},
#include "function_rows.inc"
#undef VXMCD_FUNCTION
};

/// Whether @p name returns 0 and 1 as statuses.
bool HasStatuses(const std::string& name)
{
  return name.starts_with("vxsys_CameraPots") || name.starts_with("TriggerBoard_") || name == "GetMaximumBinning";
}

} // namespace

bool IsDocumented(const std::string& name, unsigned int code)
{
  const auto row = kDocumented.find(name);
  if (row == kDocumented.end()) return false;
  if (code == RC_SUCCESS && name.starts_with("TriggerBoard_")) return true;
  return row->second.count(code) != 0 || (code <= 1 && HasStatuses(name));
}

bool NeedsCamera(const std::string& name)
{
  return IsDocumented(name, RC_NOT_INITIALIZED);
}
