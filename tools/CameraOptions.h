// SPDX-License-Identifier: MIT
// Options that set a camera up, which several commands have.
#pragma once

#include "tools/Options.h"

#include <optional>
#include <string>
#include <vector>

namespace CLI {
class App;
class Option;
} // namespace CLI

namespace vxtool {

/// @param cameras  not empty; one for each value of the option
void AddCameraOption(CLI::App& app, std::vector<TCameraChoice>& cameras, bool isRepeatable);

/// The heading of the options of the image area in the help.
inline constexpr const char* kAreaGroup = "Image area, in sensor pixels; the first column and row are 1";
CLI::Option* AddAreaOption(CLI::App& app, TImageAreaOptions& area);
CLI::Option* AddBinningOption(CLI::App& app, TImageAreaOptions& area);

void AddReadoutOptions(CLI::App& app, TReadoutOptions& readout);
/// Exposure, cycle, trigger, overlap.
void AddTimingOptions(CLI::App& app, TAcquireOptions& options, std::optional<Trigger>& trigger);
CLI::Option* AddEncodingOption(CLI::App& app, TAcquireOptions& options);
CLI::Option* AddFeatureSettings(CLI::App& app, const std::string& name, std::vector<TFeatureSetting>& settings,
                                const std::string& help);

/// The heading of the options of cooling in the help.
inline constexpr const char* kCoolingGroup = "Cooling";
void AddTargetOption(CLI::App& app, TCoolingOptions& cooling);
void AddFanOption(CLI::App& app, TCoolingOptions& cooling);
CLI::Option* AddRamp(CLI::App& app, std::optional<double>& target, const std::string& help);

CLI::Option* AddSettingsFileOption(CLI::App& app, std::string& file);

} // namespace vxtool
