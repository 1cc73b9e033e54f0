// SPDX-License-Identifier: MIT
// The options of the command convert.
#pragma once

#include "tools/Options.h"

#include <optional>
#include <string>

namespace CLI {
class App;
}

namespace vxtool {

/// What the command line says, before it is checked as a whole.
struct TConvertGiven
{
  std::optional<int> bits;
  std::optional<double> timeout;
};

/// The parser writes into @p options and @p given, which outlive it.
void AddConvertOptions(CLI::App& app, TConvertOptions& options, TConvertGiven& given);
/// Completes the options. Returns what of them does not go together, "" for nothing.
std::string CompleteConvert(TConvertOptions& options, const TConvertGiven& given);

} // namespace vxtool
