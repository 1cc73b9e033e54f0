// SPDX-License-Identifier: MIT
// The functions of the public header as the files of this folder define them.
#pragma once

#include "vxmcd.h"

/// What an exported function does. The exported one has the same name outside of this namespace: it calls this one, and
/// explains refusals in the log and records calls in the trace (exported_functions.cpp). A call of one entry point by
/// another stays in here and is neither logged nor recorded by itself.
namespace EntryPoint {

#define ENTRY_POINT(name, parameters, arguments, signature) unsigned int name parameters;
#define ENTRY_POINT_DECORATED ENTRY_POINT
#define ENTRY_FUNCTION(result, name, parameters, arguments, signature) result name parameters;
#define ENTRY_FUNCTION_DECORATED ENTRY_FUNCTION
#include "api/entry_points.def"

} // namespace EntryPoint
