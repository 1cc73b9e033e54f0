// SPDX-License-Identifier: MIT
// The options of the command live. The program in Python that the command runs reads them as texts.
#pragma once

#include "tools/Options.h"

#include <optional>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace vxtool {

/// Where the parser puts values when it checks them; the command reads LiveArguments() only.
struct TLiveGiven
{
  TAcquireOptions settings;
  std::optional<Trigger> trigger;
  std::optional<int> bits;
  std::string text;
  std::vector<std::string> hosts;
  bool flag = false;
};

/// All but the camera. The parser writes into @p given, which outlives it.
void AddLiveOptions(CLI::App& app, TLiveGiven& given);
/// The options as they were given, or their defaults, but for the camera.
std::vector<std::string> LiveArguments(const CLI::App& live);

} // namespace vxtool
