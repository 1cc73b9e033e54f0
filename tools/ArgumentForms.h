// SPDX-License-Identifier: MIT
// Arguments that are read strictly.
#pragma once

#include "tools/Options.h"

#include <string>

namespace vxtool {

/// The largest position, side or binning that is read.
inline constexpr int kMaxSide = 65536;

/// "LEFT,TOP,WIDTHxHEIGHT", for example "101,201,640x480". False for any other text, with nothing written; the
/// other Parse functions answer alike.
bool ParseArea(const std::string& text, TImageAreaOptions& area);
/// "HxV", for example "2x2".
bool ParseBinning(const std::string& text, TImageAreaOptions& area);
/// "FIRST-LAST,FIRST-LAST,...", rows from 1.
bool ParseTracks(const std::string& text, std::vector<TTrack>& tracks);
/// "10-20,30", numbers of images from 1, in any order.
bool ParseImageNumbers(const std::string& text, TNumberRanges& numbers);
/// "none" or the name of a codec, with a level from 1 to 9: "zstd:3".
bool ParseCompression(const std::string& text, TCompression& compression);
/// "640x480": the form of sizes and binnings.
std::string SizeText(int horizontal, int vertical);
/// A decimal number with or without a sign; zeros at its beginning mean nothing.
bool ParseWholeNumber(const std::string& text, long& number);
/// A time in s, above 0 and at most 1e6.
bool ParseSeconds(const std::string& text, double& seconds);

} // namespace vxtool
