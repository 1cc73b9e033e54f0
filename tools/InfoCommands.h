// SPDX-License-Identifier: MIT
// The commands that only tell something.
#pragma once

#include "tools/ExitCode.h"

namespace vxtool {

/// Prints the cameras that are attached.
ExitCode ListCameras();
/// Opens a camera and prints what it is set to and can do.
ExitCode DescribeCamera(int number);

} // namespace vxtool
