// SPDX-License-Identifier: MIT
// The functions whose calls the trace records.
#pragma once

#include "trace/TTraceRecorder.h"

#include <cstdint>

/// The numbers of the functions in the table of traced functions.
namespace FunctionNumber {

enum : std::uint16_t
{
#define CORE_CALL(name, parameters, arguments, signature) name,
#include "features/core_calls.def"
#define ENTRY_POINT(name, parameters, arguments, signature) name,
#define ENTRY_POINT_DECORATED ENTRY_POINT
#define ENTRY_FUNCTION(result, name, parameters, arguments, signature) name,
#define ENTRY_FUNCTION_DECORATED ENTRY_FUNCTION
#define OUTSIDE_FUNCTION(name, signature) name,
#include "api/entry_points.def"
#define FIXED_RESULT(name, code, reason) name,
#define FIXED_RESULT_TYPED(name, arguments, symbol, code, reason) name,
#define FIXED_RESULT_TYPED_ONLY(name, arguments, symbol, code, reason) name##Decorated,
#define FIXED_VALUE(name, parameters, outputs, type, value, code, reason) name,
#include "api/fixed_results.def"
  kCount
};

} // namespace FunctionNumber

/// All of them, in the order of their numbers.
extern const TTracedFunction kTracedFunctions[FunctionNumber::kCount];
