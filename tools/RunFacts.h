// SPDX-License-Identifier: MIT
// What the description of a recorded run tells the writers of image files.
#pragma once

#include "runs/TRunDescription.h"
#include "tools/ImageData.h"

namespace vxtool {

/// What the writers of image files want to know, but for the number of images that a file may get.
TRunFacts FactsOf(const TRunDescription& run);

} // namespace vxtool
