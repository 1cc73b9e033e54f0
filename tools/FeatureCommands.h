// SPDX-License-Identifier: MIT
// The commands that read and write single features of a camera.
#pragma once

#include "tools/Messages.h"
#include "tools/Options.h"

namespace vxtool {

/// Prints features with their values, and what they can be set to; without names all that the camera has.
ExitCode GetFeatures(const TOptions& options);
/// Sets features in their order, up to one that is refused, and prints what they are set to in the end.
ExitCode SetFeatures(const TOptions& options);

/// Prints each feature that the camera has or may have, where it comes from, and its value or why it is not there.
ExitCode ShowFeatureSources(const TOptions& options);

} // namespace vxtool
