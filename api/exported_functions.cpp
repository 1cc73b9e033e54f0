// SPDX-License-Identifier: MIT
// The exported functions: what an entry point does, with an explanation in the log when it is refused, and a record of the
// call in the trace.
#include "api/entry_points.h"
#include "api/TExplainedCall.h"
#include "api/traced_functions.h"

// NOLINTBEGIN(bugprone-macro-parentheses): a list of arguments has its parentheses
#define ENTRY_POINT(name, parameters, arguments, signature)                                                       \
  unsigned int name parameters                                                                                    \
  {                                                                                                               \
    return TExplainedCall(#name, FunctionNumber::name, EntryPoint::name) arguments;                               \
  }
#define ENTRY_FUNCTION(result, name, parameters, arguments, signature)                                            \
  result name parameters                                                                                          \
  {                                                                                                               \
    return TTracedCall(FunctionNumber::name, EntryPoint::name) arguments;                                         \
  }
// C and every language that calls C reach the function by its plain name.
#define ENTRY_POINT_DECORATED(name, parameters, arguments, signature)                                             \
  ENTRY_POINT(name, parameters, arguments, signature)                                                             \
  extern "C" VXMCD_API unsigned int Plain##name parameters __asm__(#name);                                        \
  unsigned int Plain##name parameters                                                                             \
  {                                                                                                               \
    return TExplainedCall(#name, FunctionNumber::name, EntryPoint::name) arguments;                               \
  }
#define ENTRY_FUNCTION_DECORATED(result, name, parameters, arguments, signature)                                  \
  ENTRY_FUNCTION(result, name, parameters, arguments, signature)                                                  \
  extern "C" VXMCD_API result Plain##name parameters __asm__(#name);                                              \
  result Plain##name parameters                                                                                   \
  {                                                                                                               \
    return TTracedCall(FunctionNumber::name, EntryPoint::name) arguments;                                         \
  }
// NOLINTEND(bugprone-macro-parentheses)
#include "api/entry_points.def"
