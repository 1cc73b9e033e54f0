// SPDX-License-Identifier: MIT
// Switches the trace on, in the shared library.
#include "api/traced_functions.h"
#include "features/core_calls.h"

#include <cstdlib>

namespace {

/// The environment is read when the library is loaded.
[[gnu::constructor]] void SwitchTraceOn()
{
  TTraceRecorder::Configure(secure_getenv("VXMCD_TRACE"), kTracedFunctions, FeatureLibraryFunction());
}

} // namespace
