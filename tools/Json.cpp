// SPDX-License-Identifier: MIT
// JSON by way of nlohmann's library.
#include "tools/Json.h"

#include <charconv>
#include <cmath>

namespace vxtool {

namespace {

Json AreaJson(const TSensorArea& area)
{
  if (!area.tracks.empty()) return {{"tracks", TracksText(area.tracks)}};
  if (area.width < 1) return nullptr;
  return {{"left", area.left},
          {"top", area.top},
          {"width", area.width},
          {"height", area.height},
          {"horizontal_binning", area.horizontalBinning},
          {"vertical_binning", area.verticalBinning}};
}

// A time, 0 of which says that it is not known.
Json SecondsJson(double seconds)
{
  return seconds > 0.0 ? JsonNumber(static_cast<float>(seconds)) : Json(nullptr);
}

} // namespace

std::string JsonLine(const Json& json)
{
  return json.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n";
}

Json JsonNumber(float number)
{
  if (!std::isfinite(number)) return nullptr;
  char text[64];
  const auto written = std::to_chars(text, text + sizeof text, number);
  double value = 0.0;
  std::from_chars(text, written.ptr, value);
  return value;
}

// Values of single precision, which the library has, without the digits that double precision adds.
Json JsonOfSingle(const std::optional<double>& value)
{
  return value ? JsonNumber(static_cast<float>(*value)) : Json(nullptr);
}

Json JsonTextOrNull(const std::string& text)
{
  return text.empty() ? Json(nullptr) : Json(text);
}

Json FactsJson(const TRunFacts& facts, const TImageShape& shape)
{
  return {{"model", facts.camera},
          {"serial", JsonOrNull(facts.serial)},
          {"start_utc", facts.startUtc},
          {"image_width", shape.width},
          {"image_height", shape.height},
          {"image_bits", static_cast<int>(shape.depth)},
          {"area", AreaJson(facts.area)},
          {"gain", JsonTextOrNull(facts.readout.gain)},
          {"amplifier", JsonTextOrNull(facts.readout.amplifier)},
          {"speed_mhz", JsonOfSingle(facts.readout.megahertz)},
          {"image_type", JsonTextOrNull(facts.imageType)},
          {"trigger", JsonTextOrNull(facts.trigger)},
          {"accumulations", facts.accumulations},
          {"exposure_s", SecondsJson(facts.exposureSeconds)},
          {"cycle_s", SecondsJson(facts.cycleSeconds)},
          {"celsius_start", JsonOfSingle(facts.sensorCelsius)},
          {"celsius_target", JsonOfSingle(facts.targetCelsius)}};
}

Json FileJson(const TRunFacts& facts, const TImageShape& shape, std::size_t images, bool isComplete,
              const std::optional<TFrameCounts>& counts)
{
  Json json = {{"software", facts.software}, {"complete", isComplete}, {"images", images}};
  json.update(FactsJson(facts, shape));
  PutCounts(json, counts);
  return json;
}

void PutCounts(Json& json, const std::optional<TFrameCounts>& counts)
{
  if (!counts) return;
  json["delivered"] = counts->delivered;
  json["overwritten"] = counts->overwritten;
  json["lost_in_camera"] = JsonOrNull(counts->lostInCamera);
}

} // namespace vxtool
