// SPDX-License-Identifier: MIT
// The functions of the public header as the files of this folder define them.
#pragma once

#include "vxmcd.h"

/// What an exported function does. The exported one has the same name outside of this namespace: it calls this one, and
/// explains refusals in the log (exported_functions.cpp). A call of one entry point by another stays in here and is not
/// logged by itself.
namespace EntryPoint {

#define ENTRY_POINT(name, parameters, arguments) unsigned int name parameters;
#define ENTRY_POINT_DECORATED(name, parameters, arguments) unsigned int name parameters;
#include "api/entry_points.def"

} // namespace EntryPoint
