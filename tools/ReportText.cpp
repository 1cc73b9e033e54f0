// SPDX-License-Identifier: MIT
// Formats the parts of a report.
#include "tools/ReportText.h"

#include <cstdio>

namespace vxtool {

std::string ReportHeadline(const std::string& outcome, double seconds, long images)
{
  char text[120];
  std::snprintf(text, sizeof text, "%s after %.2f s, %.1f images/s\n", outcome.c_str(), seconds,
                seconds > 0.0 ? static_cast<double>(images) / seconds : 0.0);
  return text;
}

std::string ReportRow(const char* what, const std::string& count, const std::string& remark)
{
  char text[80];
  std::snprintf(text, sizeof text, "%-34s %10s", what, count.c_str());
  return std::string(text) + (remark.empty() ? "" : "  " + remark) + "\n";
}

std::string ReportRow(const char* what, long count, const std::string& remark)
{
  return ReportRow(what, std::to_string(count), remark);
}

std::string CameraText(const TRunFacts& facts)
{
  return facts.camera + (facts.serial ? " " + std::to_string(*facts.serial) : "");
}

std::string AreaText(const TSensorArea& area)
{
  char text[120];
  std::snprintf(text, sizeof text, "%d,%d,%dx%d, binning %dx%d", area.left, area.top, area.width, area.height,
                area.horizontalBinning, area.verticalBinning);
  return text;
}

} // namespace vxtool
