// SPDX-License-Identifier: MIT
// The settings of a run that are stored in a file, under the names of the options of acquire.
#pragma once

#include "tools/ImageData.h"
#include "tools/Options.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace vxtool {

/// What the camera is set to when a run begins, where the options do not say it or the camera may have changed it.
struct TSettingsInForce
{
  std::string model;
  std::string serial;
  std::string firmware;
  float exposureSeconds = 0.0F;
  float cycleSeconds = 0.0F;      ///< from one image to the next
  float accumulateSeconds = 0.0F; ///< from one exposure of a sum to the next
  std::string encoding;           ///< of single exposures; "" when it is not known
  std::optional<bool> isBaselineClamped;
  TSensorArea area;
  std::vector<TFeatureSetting> features; ///< those set by name, with the values in force
};

/// The names of the settings, in the order in which a file has them.
std::vector<std::string> SettingNames();
/// The option of the command line, "--mode" for example, in whose presence a setting of a file is left out, since the
/// two do not go together; "" for none.
/// @param isGiven  whether the command line has this option; with a word, "mode=single", whether it has the option with
///                 this word
std::string DisplacingOption(const std::string& setting, const std::function<bool(const std::string&)>& isGiven);
/// The text of the file.
std::string SettingsText(const TAcquireOptions& options, const TSettingsInForce& inForce);

} // namespace vxtool
