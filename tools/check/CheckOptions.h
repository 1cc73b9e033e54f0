// SPDX-License-Identifier: MIT
// The options of the command check.
#pragma once

#include "tools/Options.h"

namespace CLI {
class App;
}

namespace vxtool {

/// All but the camera. The parser writes into @p options, which outlive it.
void AddCheckOptions(CLI::App& command, TCheckOptions& options);

} // namespace vxtool
