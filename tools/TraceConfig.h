// SPDX-License-Identifier: MIT
// Simulated cameras like those of a trace.
#pragma once

#include "tools/Messages.h"
#include "tools/TraceOptions.h"
#include "trace/TTraceFile.h"

#include <string>

namespace vxtool {

/// A configuration of simulated cameras (docs/simulator.md) that are as the trace shows its cameras: model and texts, size of
/// the sensor, limits, texts of enumerated features, features that they do without, and calls that they always refused. "" when
/// the trace has no camera.
std::string ConfigOf(const TTraceFile& file);

ExitCode WriteTraceConfig(const TTraceOptions& options);

} // namespace vxtool
