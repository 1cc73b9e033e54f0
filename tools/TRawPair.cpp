// SPDX-License-Identifier: MIT
// The description is text that anybody may have written: every value of it is checked.
#include "tools/TRawPair.h"

#include "tools/ArgumentForms.h"
#include "tools/Json.h"

#include <filesystem>
#include <stdexcept>
#include <type_traits>
#include <utility>

namespace vxtool {

namespace {

constexpr std::uintmax_t kMaxDescriptionBytes = 1U << 30; // of some ten million images

template <typename Value>
bool IsOf(const Json& value)
{
  if constexpr (std::is_integral_v<Value>) {
    if (!value.is_number_integer()) return false;
    return value.is_number_unsigned() ? std::in_range<Value>(value.get<std::uint64_t>())
                                      : std::in_range<Value>(value.get<std::int64_t>());
  } else if constexpr (std::is_floating_point_v<Value>) {
    return value.is_number();
  } else {
    return value.is_string();
  }
}

// A value, or a default for null and for what is missing. Throws for another type.
template <typename Value>
Value ValueOr(const Json& json, const char* key, Value otherwise)
{
  const auto found = json.find(key);
  if (found == json.end() || found->is_null()) return otherwise;
  if (!IsOf<Value>(*found))
    throw std::invalid_argument(std::string(key) + ": " +
                                found->dump(-1, ' ', true, Json::error_handler_t::replace) +
                                " is not accepted there");
  return found->get<Value>();
}

template <typename Value>
std::optional<Value> Optional(const Json& json, const char* key)
{
  const auto found = json.find(key);
  if (found == json.end() || found->is_null()) return std::nullopt;
  return ValueOr<Value>(json, key, {});
}

TImageShape ShapeOf(const Json& json)
{
  const auto type = ValueOr<std::string>(json, "pixel_type", "");
  TImageShape shape{ValueOr(json, "image_width", 0), ValueOr(json, "image_height", 0), PixelDepth::Bits16};
  if (type == "uint8")
    shape.depth = PixelDepth::Bits8;
  else if (type == "int32")
    shape.depth = PixelDepth::Bits32;
  else if (type != "uint16")
    throw std::invalid_argument("pixel_type: '" + type + "' is none of uint8, uint16, int32");
  for (const int side : {shape.width, shape.height})
    if (side < 1 || side > kMaxSide)
      throw std::invalid_argument("image_width and image_height: 1 to 65536 are accepted");
  if (ValueOr<std::string>(json, "byte_order", "") != "little")
    throw std::invalid_argument("byte_order: 'little' is accepted");
  return shape;
}

TSensorArea AreaOf(const Json& json)
{
  TSensorArea area;
  const auto found = json.find("area");
  if (found == json.end() || found->is_null()) return area;
  if (!found->is_object()) throw std::invalid_argument("area: is no object");
  if (const auto tracks = ValueOr<std::string>(*found, "tracks", ""); !tracks.empty()) {
    if (!ParseTracks(tracks, area.tracks)) throw std::invalid_argument("area: tracks are wrong");
    return area;
  }
  const auto side = [&](const char* key) {
    const int value = ValueOr(*found, key, 1);
    if (value < 1 || value > kMaxSide)
      throw std::invalid_argument(std::string("area: ") + key + " is out of range");
    return value;
  };
  area.left = side("left");
  area.top = side("top");
  area.width = side("width");
  area.height = side("height");
  area.horizontalBinning = side("horizontal_binning");
  area.verticalBinning = side("vertical_binning");
  return area;
}

TRunFacts ReadFacts(const Json& json)
{
  TRunFacts facts;
  facts.software = std::string("vxmcd tool ") + VXTOOL_VERSION;
  facts.camera = PrintableAscii(ValueOr<std::string>(json, "model", ""));
  facts.serial = Optional<int>(json, "serial");
  facts.startUtc = PrintableAscii(ValueOr<std::string>(json, "start_utc", ""));
  facts.trigger = PrintableAscii(ValueOr<std::string>(json, "trigger", ""));
  facts.imageType = PrintableAscii(ValueOr<std::string>(json, "image_type", ""));
  facts.exposureSeconds = ValueOr(json, "exposure_s", 0.0);
  facts.cycleSeconds = ValueOr(json, "cycle_s", 0.0);
  facts.accumulations = ValueOr(json, "accumulations", 1);
  facts.area = AreaOf(json);
  facts.readout.gain = PrintableAscii(ValueOr<std::string>(json, "gain", ""));
  facts.readout.amplifier = PrintableAscii(ValueOr<std::string>(json, "amplifier", ""));
  facts.readout.megahertz = Optional<double>(json, "speed_mhz");
  facts.sensorCelsius = Optional<double>(json, "celsius_start");
  facts.targetCelsius = Optional<double>(json, "celsius_target");
  return facts;
}

std::optional<ImageCheck> CheckOf(const Json& frame)
{
  const auto word = ValueOr<std::string>(frame, "check", "");
  for (const ImageCheck check : {ImageCheck::Unchecked, ImageCheck::Right, ImageCheck::Wrong})
    if (word == ImageCheckText(check)) return check;
  return std::nullopt;
}

std::vector<TImageLabel> LabelsOf(const Json& json)
{
  const auto found = json.find("frames");
  if (found == json.end() || !found->is_array())
    throw std::invalid_argument("frames: there is no list of images; the file was not finished");
  std::vector<TImageLabel> labels;
  labels.reserve(found->size());
  for (const Json& frame : *found) {
    if (!frame.is_object()) throw std::invalid_argument("frames: is no list of objects");
    labels.push_back({ValueOr(frame, "image", 0L), Optional<long long>(frame, "ticks"),
                      Optional<long long>(frame, "host_ns"), CheckOf(frame)});
    if (labels.back().number <= (labels.size() > 1 ? labels[labels.size() - 2].number : 0L))
      throw std::invalid_argument("frames: the numbers of images do not ascend from 1 on");
  }
  return labels;
}

} // namespace

bool TRawPair::Fail(const std::string& message)
{
  error_ = message;
  return false;
}

bool TRawPair::Describe(const std::string& text)
{
  try {
    const Json json = Json::parse(text);
    if (!json.is_object()) throw std::invalid_argument("is no object");
    shape_ = ShapeOf(json);
    facts_ = ReadFacts(json);
    labels_ = LabelsOf(json);
    counts_.lostInCamera = Optional<long>(json, "lost_in_camera");
    counts_.delivered = ValueOr(json, "delivered", static_cast<long>(labels_.size()));
    counts_.overwritten = ValueOr(json, "overwritten", 0L);
    return true;
  } catch (const Json::parse_error&) {
    return Fail(path_ + ".json: is not JSON");
  } catch (const std::exception& error) {
    return Fail(path_ + ".json: " + error.what());
  }
}

bool TRawPair::Open(const std::string& path)
{
  path_ = path;
  const std::string description = path + ".json";
  std::error_code error;
  const std::uintmax_t descriptionBytes = std::filesystem::file_size(description, error);
  if (error) return Fail(description + ": cannot be read: " + error.message() + "; it describes the pixels");
  if (descriptionBytes > kMaxDescriptionBytes) return Fail(description + ": is too large for a description");
  std::string text(static_cast<std::size_t>(descriptionBytes), '\0');
  if (!std::ifstream(description, std::ios::binary).read(text.data(), static_cast<std::streamsize>(text.size())))
    return Fail(description + ": cannot be read");
  if (!Describe(text)) return false;
  const std::uintmax_t bytes = std::filesystem::file_size(path, error);
  if (error) return Fail(path + ": cannot be read: " + error.message());
  if (bytes != labels_.size() * shape_.Bytes())
    return Fail(path + ": has " + std::to_string(bytes) + " bytes, and its description " +
                std::to_string(labels_.size()) + " images of " + std::to_string(shape_.Bytes()));
  file_.open(path, std::ios::binary);
  return file_ ? true : Fail(path + ": cannot be read");
}

bool TRawPair::Read(std::size_t index, std::vector<std::byte>& pixels)
{
  pixels.resize(shape_.Bytes());
  file_.seekg(static_cast<std::streamoff>(index * shape_.Bytes()));
  if (file_.read(reinterpret_cast<char*>(pixels.data()), static_cast<std::streamsize>(pixels.size()))) return true;
  return Fail(path_ + ": image " + std::to_string(labels_[index].number) + " cannot be read");
}

} // namespace vxtool
