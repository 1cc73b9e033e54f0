// SPDX-License-Identifier: MIT
// The functions whose calls the trace records.
#include "api/traced_functions.h"

constexpr TTracedFunction kTracedFunctions[FunctionNumber::kCount] = {
#define CORE_CALL(name, parameters, arguments, signature) {Trace::kCore, #name, signature},
#include "features/core_calls.def"
#define ENTRY_POINT(name, parameters, arguments, signature) {Trace::kApi, #name, signature},
#define ENTRY_POINT_DECORATED ENTRY_POINT
#define ENTRY_FUNCTION(result, name, parameters, arguments, signature) {Trace::kApi, #name, signature},
#define ENTRY_FUNCTION_DECORATED ENTRY_FUNCTION
#define OUTSIDE_FUNCTION(name, signature) {Trace::kApi, #name, signature},
#include "api/entry_points.def"
// Nothing is known of the arguments of most of them.
#define FIXED_RESULT(name, code, reason) {Trace::kApi, #name, "unused"},
#define FIXED_RESULT_TYPED(name, arguments, symbol, code, reason) {Trace::kApi, #name, "unused"},
#define FIXED_RESULT_TYPED_ONLY(name, arguments, symbol, code, reason) {Trace::kApi, #name "Decorated", "unused"},
#define FIXED_VALUE(name, parameters, outputs, type, value, code, reason) {Trace::kApi, #name, "unused"},
#include "api/fixed_results.def"
};
