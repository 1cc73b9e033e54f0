// SPDX-License-Identifier: MIT
// The commands that only tell something.
#pragma once

#include "tools/ExitCode.h"
#include "tools/Options.h"

namespace vxtool {

/// Prints the cameras that are attached.
ExitCode ListCameras(const TOptions& options);
/// Opens a camera and prints what it is, what it is set to and what it can do.
ExitCode ShowInfo(const TOptions& options);

} // namespace vxtool
