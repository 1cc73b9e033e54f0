// SPDX-License-Identifier: MIT
// The commands that only print something.
#pragma once

#include "tools/Messages.h"
#include "tools/Options.h"

namespace vxtool {

/// Prints the cameras that are attached.
ExitCode ListCameras(const TOptions& options);
/// Opens a camera and prints what it is, what it is set to and what it can do.
ExitCode ShowInfo(const TOptions& options);
/// Prints what is in the directory of a recorded run.
ExitCode ShowRecordedRun(const TOptions& options);

} // namespace vxtool
