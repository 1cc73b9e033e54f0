// SPDX-License-Identifier: MIT
// The options of the command doctor.
#pragma once

#include "tools/Options.h"

namespace CLI {
class App;
}

namespace vxtool {

/// All but the camera. The parser writes into @p options, which outlive it.
void AddDoctorOptions(CLI::App& command, TDoctorOptions& options);

} // namespace vxtool
