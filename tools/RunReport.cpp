// SPDX-License-Identifier: MIT
// Formats the counts of a run.
#include "tools/RunReport.h"

#include "tools/FactsJson.h"

#include <cmath>
#include <cstdio>

namespace vxtool {

namespace {

std::string Row(const char* what, const std::string& count, const std::string& remark = "")
{
  char text[80];
  std::snprintf(text, sizeof text, "%-34s %10s", what, count.c_str());
  return std::string(text) + (remark.empty() ? "" : "  " + remark) + "\n";
}

std::string AreaText(const TSensorArea& area)
{
  if (!area.tracks.empty()) return std::to_string(area.tracks.size()) + " tracks";
  char text[120];
  std::snprintf(text, sizeof text, "area %d,%d,%dx%d, binning %dx%d", area.left, area.top, area.width, area.height,
                area.horizontalBinning, area.verticalBinning);
  return text;
}

// What the images are, for example "TRELLIS CMOS 512, 320x240 pixels of 16 bits, ...".
std::string ImagesText(const TRunSummary& summary)
{
  const TRunFacts& facts = summary.facts;
  char text[80];
  std::snprintf(text, sizeof text, ", %dx%d pixels of %d bits, ", summary.shape.width, summary.shape.height,
                static_cast<int>(summary.shape.depth));
  std::string line = facts.camera + (facts.serial ? " " + std::to_string(*facts.serial) : "") + text;
  line += AreaText(facts.area);
  if (!facts.readout.gain.empty()) line += ", " + facts.readout.gain;
  if (facts.sensorCelsius) {
    std::snprintf(text, sizeof text, ", %.1f C", *facts.sensorCelsius);
    line += text;
  }
  return line + "\n";
}

} // namespace

std::string ReportText(const TRunSummary& summary)
{
  const TRunTotals& t = summary.totals;
  char head[120];
  std::snprintf(head, sizeof head, "%s after %.2f s, %.1f images/s\n", summary.outcome.c_str(), summary.seconds,
                summary.seconds > 0.0 ? static_cast<double>(t.fetched) / summary.seconds : 0.0);
  std::string text = head + ImagesText(summary);
  text += Row(t.lostInCamera ? "produced by the camera" : "produced by the camera, at least",
              std::to_string(t.Produced()));
  text += Row("  lost in the camera", t.lostInCamera ? std::to_string(*t.lostInCamera) : "unknown",
              t.lostInCamera ? "" : "(no even pace or no timestamps to tell by)");
  text += Row("  delivered", std::to_string(t.delivered));
  if (summary.spoolDirectory.empty()) {
    text += Row("    overwritten before fetched", std::to_string(t.overwritten));
    text += Row("    not fetched at the end", std::to_string(t.notFetched));
    text += Row("    fetched", std::to_string(t.fetched));
    text += Row("      not written", std::to_string(t.notWritten));
    text += Row("      written", std::to_string(t.written), summary.output);
  } else {
    text += Row("    not on disk", std::to_string(t.notWritten));
    text += Row("    on disk", std::to_string(t.written), summary.spoolDirectory);
    if (!summary.output.empty()) text += "made of them: " + summary.output + "\n";
  }
  if (t.withoutTimestamp > 0) text += Row("delivered without a timestamp", std::to_string(t.withoutTimestamp));
  return text;
}

std::string ReportJson(const TRunSummary& summary)
{
  const TRunTotals& t = summary.totals;
  Json json = {{"outcome", summary.outcome},
               {"seconds", std::round(summary.seconds * 1.0e6) / 1.0e6},
               {"produced", t.Produced()},
               {"lost_in_camera", JsonOrNull(t.lostInCamera)},
               {"delivered", t.delivered},
               {"overwritten", t.overwritten},
               {"not_fetched", t.notFetched},
               {"fetched", t.fetched},
               {"written", t.written},
               {"not_written", t.notWritten},
               {"without_timestamp", t.withoutTimestamp},
               {"output", summary.output}};
  json.update(FactsJson(summary.facts, summary.shape));
  json["celsius_end"] = JsonOfSingle(summary.celsiusAtEnd);
  if (!summary.spoolDirectory.empty()) json["spool"] = summary.spoolDirectory;
  return JsonLine(json);
}

} // namespace vxtool
