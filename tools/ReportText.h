// SPDX-License-Identifier: MIT
// What the reports of the tool are made of.
#pragma once

#include "tools/ImageData.h"

#include <string>

namespace vxtool {

/// "complete after 1.20 s, 83.3 images/s", with its line feed. @param outcome  complete, interrupted, failed
std::string ReportHeadline(const std::string& outcome, double seconds, long images);
/// A line with a count behind what it counts, and a remark behind both.
std::string ReportRow(const char* what, const std::string& count, const std::string& remark = "");
std::string ReportRow(const char* what, long count, const std::string& remark = "");
/// "TRELLIS CMOS 101"; "" when it is not known.
std::string CameraText(const TRunFacts& facts);
/// "11,21,320x240, binning 2x2".
std::string AreaText(const TSensorArea& area);

} // namespace vxtool
