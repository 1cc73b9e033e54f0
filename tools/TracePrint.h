// SPDX-License-Identifier: MIT
// Prints the calls of a trace.
#pragma once

#include "tools/Messages.h"
#include "tools/TraceOptions.h"

namespace vxtool {

ExitCode PrintTrace(const TTraceOptions& options);

} // namespace vxtool
