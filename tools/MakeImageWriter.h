// SPDX-License-Identifier: MIT
// The writer for a format.
#pragma once

#include "tools/IImageWriter.h"
#include "tools/Options.h"

#include <memory>

namespace vxtool {

std::unique_ptr<IImageWriter> MakeImageWriter(FileFormat format);

} // namespace vxtool
