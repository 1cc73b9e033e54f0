// SPDX-License-Identifier: MIT
// The options of acquire that a file of settings gives.
#pragma once

#include "tools/Options.h"

namespace CLI {
class App;
}

namespace vxtool {

/// Reads the file of --settings, if one is given, into the options of @p acquire that the command line does not have.
/// Throws what the parser throws when the file or a line of it is wrong.
void AddSettingsOfFile(CLI::App& acquire, TAcquireOptions& options);

} // namespace vxtool
