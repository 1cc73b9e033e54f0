// SPDX-License-Identifier: MIT
// The exported functions: what an entry point does, with an explanation in the log when it is refused.
#include "api/entry_points.h"
#include "api/TExplainedCall.h"

// NOLINTBEGIN(bugprone-macro-parentheses): a list of arguments has its parentheses
#define ENTRY_POINT(name, parameters, arguments)                                                                  \
  unsigned int name parameters                                                                                    \
  {                                                                                                               \
    return TExplainedCall(#name, EntryPoint::name) arguments;                                                     \
  }
// C and every language that calls C reach the function by its plain name.
#define ENTRY_POINT_DECORATED(name, parameters, arguments)                                                        \
  ENTRY_POINT(name, parameters, arguments)                                                                        \
  extern "C" VXMCD_API unsigned int Plain##name parameters __asm__(#name);                                        \
  unsigned int Plain##name parameters                                                                             \
  {                                                                                                               \
    return TExplainedCall(#name, EntryPoint::name) arguments;                                                     \
  }
// NOLINTEND(bugprone-macro-parentheses)
#include "api/entry_points.def"
