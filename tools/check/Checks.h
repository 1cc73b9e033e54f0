// SPDX-License-Identifier: MIT
// The checks that `vxmcd check` has, from one table.
#pragma once

#include "tools/check/TCheckContext.h"

#include <span>
#include <string>

namespace vxtool {

struct TCheck
{
  const char* group;
  const char* name;
  const char* expected; ///< what a camera that behaves does
  void (*run)(TCheckContext&);
  bool isHarsh; ///< takes minutes or changes the temperature

  std::string FullName() const { return std::string(group) + "." + name; }
};

#define CHECK(group, name, function, expected, isHarsh) void function(TCheckContext& check);
#include "tools/check/checks.def"

/// All of them, in the order in which they run.
std::span<const TCheck> AllChecks();

/// Makes the camera ready, runs a check and takes the result. Lets only TCheckContext::TInterrupted pass.
TCheckResult RunCheck(const TCheck& check, int camera, bool isHarsh);

} // namespace vxtool
