// SPDX-License-Identifier: MIT
// Formats what is known of a recorded run.
#include "tools/ConversionReport.h"

#include "tools/ImageData.h"
#include "tools/Json.h"
#include "tools/RunReport.h"

#include <cmath>
#include <cstdio>

namespace vxtool {

namespace {

constexpr std::size_t kMaxRangesShown = 20;

std::string Line(const char* what, const std::string& value)
{
  char text[64];
  std::snprintf(text, sizeof text, "%-22s ", what);
  return text + value + "\n";
}

// "" for what is not known.
std::string LineIfKnown(const char* what, const std::optional<double>& value, const char* unit)
{
  if (!value) return "";
  char text[64];
  std::snprintf(text, sizeof text, "%.7g%s", *value, unit);
  return Line(what, text);
}

std::string LineIfKnown(const char* what, const std::optional<std::int64_t>& value, const char* unit)
{
  return value ? Line(what, std::to_string(*value) + unit) : "";
}

std::string LineIfKnown(const char* what, const std::string& value)
{
  return value.empty() ? "" : Line(what, value);
}

std::string ImagesLine(const TRunDescription& run)
{
  const TRunValues& f = run.Values();
  if (!run.Layout()) return Line("images", run.LayoutProblem());
  return Line("images", std::to_string(*f.width) + "x" + std::to_string(*f.height) + " pixels, " + f.encoding +
                            ", " + std::to_string(*f.stride) + " bytes a row, " + std::to_string(f.imageBytes) +
                            " bytes an image" + (f.hasMetadata ? ", with metadata" : ""));
}

std::string IndexLine(const TRunIndex& index)
{
  if (index.IsMissing()) return Line("index", "is missing");
  const std::string damage =
      index.Damaged() > 0 ? ", and " + std::to_string(index.Damaged()) + " records that are damaged" : "";
  return Line("images in the index", std::to_string(index.Count()) + damage);
}

Json DescriptionFactsJson(const TRunDescription& run)
{
  const TRunValues& f = run.Values();
  return {{"directory", run.Directory()},
          {"state", RunFormat::StateText(f.state)},
          {"failure", JsonTextOrNull(f.failure)},
          {"images_expected", JsonOrNull(f.imagesExpected)},
          {"images_written", f.imagesWritten}};
}

} // namespace

std::string RunStateText(const TRunValues& facts)
{
  switch (facts.state) {
  case RunFormat::State::kComplete:
    return "complete";
  case RunFormat::State::kAborted:
    return "aborted by the program that took it, or the camera delivered no more images";
  case RunFormat::State::kFailed:
    return "failed" + (facts.failure.empty() ? "" : ": " + facts.failure);
  case RunFormat::State::kRecording:
    return "being recorded, or the program that took it was killed";
  }
  return "";
}

std::string RecordedRunText(const TRunDescription& run, const TRunIndex& index, const TRunImages& files)
{
  const TRunValues& f = run.Values();
  const TRunFacts facts = FactsOf(run);
  std::string text = Line("run", run.Directory());
  text += Line("state", RunStateText(f));
  text += LineIfKnown("images expected", f.imagesExpected, "");
  if (f.state != RunFormat::State::kRecording) text += Line("images written", std::to_string(f.imagesWritten));
  text += IndexLine(index);
  text += Line("image files", std::to_string(files.Count()) + ", " + std::to_string(f.imagesPerFile) +
                                  (f.imagesPerFile == 1 ? " image each" : " images each"));
  text += ImagesLine(run);
  if (facts.area.width > 0) text += Line("area", AreaText(facts.area));
  text += LineIfKnown("camera", f.model + (f.serial.empty() ? "" : " " + f.serial));
  text += LineIfKnown("started", f.startTime) + LineIfKnown("first image", f.firstFrameTime);
  text += LineIfKnown("first image's clock", f.firstFrameTick, " ticks");
  text += LineIfKnown("camera's clock", f.ticksPerSecond, " ticks/s");
  text += LineIfKnown("exposure", f.exposureSeconds, " s") + LineIfKnown("frame rate", f.frameRate, " Hz");
  text += LineIfKnown("sensor", f.sensorCelsius, " C") + LineIfKnown("gain", f.gain);
  text += LineIfKnown("readout rate", f.readoutRate);
  text += LineIfKnown("exposures an image", f.accumulations, "");
  text += LineIfKnown("trigger", facts.trigger) + LineIfKnown("written by library", f.library);
  return text;
}

std::string RecordedRunJson(const TRunDescription& run, const TRunIndex& index, const TRunImages& files)
{
  const TRunValues& f = run.Values();
  Json json = DescriptionFactsJson(run);
  json["images_in_index"] = index.IsMissing() ? Json(nullptr) : Json(index.Count());
  json["damaged_records"] = index.Damaged();
  json["image_files"] = files.Count();
  json["images_per_file"] = f.imagesPerFile;
  json["image_bytes"] = f.imageBytes;
  json["stride_bytes"] = JsonOrNull(f.stride);
  json["pixel_encoding"] = JsonTextOrNull(f.encoding);
  json["metadata"] = f.hasMetadata;
  json["layout_problem"] = JsonTextOrNull(run.LayoutProblem());
  const std::optional<TFrameLayout> layout = run.Layout();
  TImageShape shape;
  if (layout) shape = {layout->width, layout->height, WholeDepth(layout->encoding)};
  json.update(FactsJson(FactsOf(run), shape));
  json["serial_text"] = JsonTextOrNull(f.serial);
  json["frame_rate_hz"] = JsonOfSingle(f.frameRate);
  json["first_image_utc"] = JsonTextOrNull(f.firstFrameTime);
  json["first_image_ticks"] = JsonOrNull(f.firstFrameTick);
  json["ticks_per_s"] = JsonOrNull(f.ticksPerSecond);
  json["library_version"] = JsonTextOrNull(f.library);
  json["notes"] = run.Notes();
  return JsonLine(json);
}

std::string ConversionText(const TRunDescription& run, const TRunConversion& conversion,
                           const std::string& outcome, const std::string& output, PixelDepth depth)
{
  const TConversionCounts& c = conversion.Counts();
  std::string text = ReportHeadline(outcome, conversion.Seconds(), c.asked - c.notReached);
  const std::string camera = CameraText(FactsOf(run));
  if (!camera.empty()) text += camera + ", ";
  if (run.Layout())
    text += std::to_string(run.Layout()->width) + "x" + std::to_string(run.Layout()->height) + " pixels, " +
            run.Values().encoding +
            (output.empty() ? "" : " as " + std::to_string(static_cast<int>(depth)) + " bits") + ", ";
  text += "run " + RunFormat::StateText(run.Values().state) + "\n";
  const std::string wrong = conversion.Wrong().Text(kMaxRangesShown);
  const std::string absent = conversion.Absent().Text(kMaxRangesShown);
  text += ReportRow("images asked for", c.asked, conversion.Asked().Text(kMaxRangesShown));
  text += ReportRow("  checksum right", c.right);
  if (c.unchecked > 0) text += ReportRow("  without a checksum, taken", c.unchecked);
  text += ReportRow("  checksum wrong", c.wrong, wrong.empty() ? "" : "images " + wrong);
  text += ReportRow("  missing", c.unrecorded + c.unreadable, absent.empty() ? "" : "images " + absent);
  if (c.unrecordedData > 0) text += ReportRow("    with data, without a record", c.unrecordedData);
  if (c.notReached > 0) text += ReportRow("  not looked at", c.notReached);
  if (c.clippedPixels > 0) text += ReportRow("pixels clipped", c.clippedPixels);
  if (output.empty() && c.written + c.notWritten == 0) return text;
  if (c.notWritten > 0) text += ReportRow("not written", c.notWritten);
  return text + ReportRow("written", c.written, output);
}

std::string ConversionJson(const TRunDescription& run, const TRunConversion& conversion,
                           const std::string& outcome, const std::string& output, PixelDepth depth)
{
  const TConversionCounts& c = conversion.Counts();
  Json json = {{"outcome", outcome}, {"seconds", std::round(conversion.Seconds() * 1.0e6) / 1.0e6}};
  json.update(DescriptionFactsJson(run));
  json.update(Json{{"asked", c.asked},
                   {"right", c.right},
                   {"unchecked", c.unchecked},
                   {"wrong", c.wrong},
                   {"unrecorded", c.unrecorded},
                   {"unrecorded_data", c.unrecordedData},
                   {"unreadable", c.unreadable},
                   {"not_reached", c.notReached},
                   {"written", c.written},
                   {"not_written", c.notWritten},
                   {"cut", c.cut},
                   {"clipped_pixels", c.clippedPixels},
                   {"wrong_images", conversion.Wrong().Text()},
                   {"missing_images", conversion.Absent().Text()},
                   {"lost_in_camera", JsonOrNull(conversion.RunCounts().lostInCamera)},
                   {"output", output}});
  TImageShape shape;
  if (run.Layout()) shape = {run.Layout()->width, run.Layout()->height, depth};
  json.update(FactsJson(FactsOf(run), shape));
  return JsonLine(json);
}

} // namespace vxtool
