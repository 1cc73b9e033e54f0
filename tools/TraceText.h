// SPDX-License-Identifier: MIT
// Calls of a trace as texts.
#pragma once

#include "tools/Json.h"
#include "trace/TTraceFile.h"

#include <string>

namespace vxtool {

/// "SetExposureTime(seconds=0.02)", and "VX_SetFloat(1, "ExposureTime", 0.02)" for the feature library.
std::string CallText(const TTraceCall& call);
/// "20002 RC_SUCCESS", or that it did not return.
std::string ResultOf(const TTraceCall& call);
/// A line of a comparison: a mark, the thread, the call and its answer.
std::string MarkedLine(const char* mark, const TTraceCall& call);
/// "6 VX_ERR_OUT_OF_RANGE", "20066 RC_P1_INVALID": a code of one or the other library.
std::string CodeText(bool isApi, std::uint32_t code);
/// "3.1 us", "2.5 s".
std::string DurationText(double seconds);
Json ValueJson(const TTraceValue& value);
/// What the trace is of: program, process, time, libraries.
Json TraceFactsJson(const TTraceFile& file);
/// Reads the trace; says why it cannot be read.
bool ReadTrace(TTraceFile& file, const std::string& path);

} // namespace vxtool
