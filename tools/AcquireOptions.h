// SPDX-License-Identifier: MIT
// The options of the command acquire.
#pragma once

#include "tools/Options.h"

#include <optional>
#include <string>

namespace CLI {
class App;
}

namespace vxtool {

/// What the command line says, before it is checked as a whole.
struct TAcquireGiven
{
  std::optional<Trigger> trigger;
  std::optional<double> timeout; ///< in s
  std::optional<SpoolMethod> method;
  std::optional<int> bits;
};

/// All but the camera. The parser writes into @p options and @p given, which outlive it.
void AddAcquireOptions(CLI::App& app, TAcquireOptions& options, TAcquireGiven& given);
/// Completes the options. Returns what of them does not go together, "" for nothing.
std::string CompleteAcquire(TAcquireOptions& options, const TAcquireGiven& given);

} // namespace vxtool
