// SPDX-License-Identifier: MIT
// Sums a trace up.
#pragma once

#include "tools/Messages.h"
#include "tools/TraceOptions.h"

namespace vxtool {

ExitCode ShowTraceStatistics(const TTraceOptions& options);

} // namespace vxtool
