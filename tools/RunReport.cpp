// SPDX-License-Identifier: MIT
// Formats the counts of a run.
#include "tools/RunReport.h"

#include <cstdio>

namespace vxtool {

namespace {

std::string Row(const char* what, const std::string& count, const std::string& remark = "")
{
  char text[80];
  std::snprintf(text, sizeof text, "%-34s %10s", what, count.c_str());
  return std::string(text) + (remark.empty() ? "" : "  " + remark) + "\n";
}

std::string JsonText(const std::string& text)
{
  std::string quoted = "\"";
  for (const char c : text) {
    if (static_cast<unsigned char>(c) < 0x20) {
      char code[8];
      std::snprintf(code, sizeof code, "\\u%04x", static_cast<unsigned>(c));
      quoted += code;
      continue;
    }
    if (c == '"' || c == '\\') quoted += '\\';
    quoted += c;
  }
  return quoted + "\"";
}

} // namespace

std::string ReportText(const TRunSummary& summary)
{
  const TRunTotals& t = summary.totals;
  char head[120];
  std::snprintf(head, sizeof head, "%s after %.2f s, %.1f images/s\n", summary.outcome.c_str(), summary.seconds,
                summary.seconds > 0.0 ? static_cast<double>(t.fetched) / summary.seconds : 0.0);
  std::string text = head;
  text += Row(t.lostInCamera ? "produced by the camera" : "produced by the camera, at least",
              std::to_string(t.Produced()));
  text += Row("  lost in the camera", t.lostInCamera ? std::to_string(*t.lostInCamera) : "unknown",
              t.lostInCamera ? "" : "(no even pace or no timestamps to tell by)");
  text += Row("  delivered", std::to_string(t.delivered));
  text += Row("    overwritten before fetched", std::to_string(t.overwritten));
  text += Row("    not fetched at the end", std::to_string(t.notFetched));
  text += Row("    fetched", std::to_string(t.fetched));
  text += Row("      not written", std::to_string(t.notWritten));
  text += Row("      written", std::to_string(t.written), summary.output);
  if (t.withoutTimestamp > 0) text += Row("delivered without a timestamp", std::to_string(t.withoutTimestamp));
  return text;
}

std::string ReportJson(const TRunSummary& summary)
{
  const TRunTotals& t = summary.totals;
  char seconds[32];
  std::snprintf(seconds, sizeof seconds, "%.6f", summary.seconds);
  return "{\"outcome\":" + JsonText(summary.outcome) + ",\"seconds\":" + seconds +
         ",\"produced\":" + std::to_string(t.Produced()) +
         ",\"lost_in_camera\":" + (t.lostInCamera ? std::to_string(*t.lostInCamera) : "null") +
         ",\"delivered\":" + std::to_string(t.delivered) + ",\"overwritten\":" + std::to_string(t.overwritten) +
         ",\"not_fetched\":" + std::to_string(t.notFetched) + ",\"fetched\":" + std::to_string(t.fetched) +
         ",\"written\":" + std::to_string(t.written) + ",\"not_written\":" + std::to_string(t.notWritten) +
         ",\"without_timestamp\":" + std::to_string(t.withoutTimestamp) +
         ",\"output\":" + JsonText(summary.output) + "}\n";
}

} // namespace vxtool
