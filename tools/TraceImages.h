// SPDX-License-Identifier: MIT
// Writes the images of a trace.
#pragma once

#include "tools/Messages.h"
#include "tools/TraceOptions.h"

namespace vxtool {

/// Each image that the program got goes to a file of its own, as the program got it: 8, 16 or 32 bits a pixel, little-endian.
ExitCode WriteTraceImages(const TTraceOptions& options);

} // namespace vxtool
