// SPDX-License-Identifier: MIT
// Formats the counts of a run.
#include "tools/RunReport.h"

#include "tools/Json.h"

#include <cmath>
#include <cstdio>

namespace vxtool {

namespace {

// What the images are, for example "TRELLIS CMOS 512, 320x240 pixels of 16 bits, ...".
std::string ImagesText(const TRunSummary& summary)
{
  const TRunFacts& facts = summary.facts;
  char text[80];
  std::snprintf(text, sizeof text, ", %dx%d pixels of %d bits, ", summary.shape.width, summary.shape.height,
                static_cast<int>(summary.shape.depth));
  const TSensorArea& area = facts.area;
  std::string line = CameraText(facts) + text;
  line += area.tracks.empty() ? "area " + AreaText(area) : std::to_string(area.tracks.size()) + " tracks";
  if (!facts.readout.gain.empty()) line += ", " + facts.readout.gain;
  if (facts.sensorCelsius) {
    std::snprintf(text, sizeof text, ", %.1f C", *facts.sensorCelsius);
    line += text;
  }
  return line + "\n";
}

} // namespace

std::string ClippedText(long pixels, long images, PixelDepth depth)
{
  const std::string largest = depth == PixelDepth::Bits8 ? "255" : "65535";
  return std::to_string(pixels) + (pixels == 1 ? " pixel" : " pixels") + " of " + std::to_string(images) +
         (images == 1 ? " image" : " images") + " did not fit into 0 to " + largest +
         " and were clipped; --bits 32 keeps them";
}

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

std::string RunReportText(const TRunSummary& summary)
{
  const TFrameCounts& t = summary.counts;
  std::string text = ReportHeadline(summary.outcome, summary.seconds, t.fetched) + ImagesText(summary);
  text += ReportRow(t.lostInCamera ? "produced by the camera" : "produced by the camera, at least", t.Produced());
  text += ReportRow("  lost in the camera", t.lostInCamera ? std::to_string(*t.lostInCamera) : "unknown",
                    t.lostInCamera ? "" : "(no timestamps, or no constant frame period)");
  text += ReportRow("  delivered", t.delivered);
  if (summary.spoolDirectory.empty()) {
    text += ReportRow("    overwritten before fetched", t.overwritten);
    text += ReportRow("    not fetched at the end", t.notFetched);
    text += ReportRow("    fetched", t.fetched);
    text += ReportRow("      not written", t.notWritten);
    text += ReportRow("      written", t.written, summary.output);
  } else {
    const auto count = [&](long images) { return summary.isWrittenKnown ? std::to_string(images) : "unknown"; };
    text += ReportRow("    not on disk", count(t.notWritten));
    text += ReportRow("    on disk", count(t.written), summary.spoolDirectory);
    if (!summary.output.empty()) text += "made of them: " + summary.output + "\n";
  }
  if (summary.intervalSeconds) {
    text += ReportRow("started late", t.late);
    text += ReportRow("not taken, their time had passed", t.missed);
  }
  if (t.withoutTimestamp > 0) text += ReportRow("delivered without a timestamp", t.withoutTimestamp);
  if (t.clippedPixels > 0) text += ReportRow("pixels clipped", t.clippedPixels);
  return text;
}

std::string RunReportJson(const TRunSummary& summary)
{
  const TFrameCounts& t = summary.counts;
  Json json = {{"camera", summary.camera},
               {"outcome", summary.outcome},
               {"seconds", std::round(summary.seconds * 1.0e6) / 1.0e6},
               {"produced", t.Produced()},
               {"lost_in_camera", JsonOrNull(t.lostInCamera)},
               {"delivered", t.delivered},
               {"overwritten", t.overwritten},
               {"not_fetched", t.notFetched},
               {"fetched", t.fetched},
               {"written", summary.isWrittenKnown ? Json(t.written) : Json(nullptr)},
               {"not_written", summary.isWrittenKnown ? Json(t.notWritten) : Json(nullptr)},
               {"without_timestamp", t.withoutTimestamp},
               {"clipped_pixels", t.clippedPixels},
               {"interval_s", JsonOrNull(summary.intervalSeconds)},
               {"late", t.late},
               {"missed", t.missed},
               {"output", summary.output}};
  json.update(FactsJson(summary.facts, summary.shape));
  json["celsius_end"] = JsonOfSingle(summary.celsiusAtEnd);
  if (!summary.spoolDirectory.empty()) json["spool"] = summary.spoolDirectory;
  return JsonLine(json);
}

} // namespace vxtool
