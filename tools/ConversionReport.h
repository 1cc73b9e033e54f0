// SPDX-License-Identifier: MIT
// What is in the directory of a run, and what became of its images, as text.
#pragma once

#include "tools/TRunConversion.h"

#include <string>

namespace vxtool {

/// Says in one line how a run ended.
std::string RunStateText(const TRunValues& facts);

/// What is in the directory of a run: lines for a person, or one line of JSON.
std::string RecordedRunText(const TRunDescription& run, const TRunIndex& index, const TRunImages& files);
std::string RecordedRunJson(const TRunDescription& run, const TRunIndex& index, const TRunImages& files);

/// What became of the images: lines for a person, or one line of JSON.
/// @param outcome  complete, interrupted, failed
/// @param output   the file, "" for none
std::string ConversionText(const TRunDescription& run, const TRunConversion& conversion,
                           const std::string& outcome, const std::string& output, PixelDepth depth);
std::string ConversionJson(const TRunDescription& run, const TRunConversion& conversion,
                           const std::string& outcome, const std::string& output, PixelDepth depth);

} // namespace vxtool
