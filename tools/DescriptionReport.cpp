// SPDX-License-Identifier: MIT
// Formats a camera's description.
#include "tools/DescriptionReport.h"

#include "tools/Json.h"

#include <cstdio>
#include <span>

namespace vxtool {

namespace {

struct TBitWord
{
  unsigned int bits;
  const char* word; // "": not listed
};

constexpr TBitWord kAcquisitionModes[] = {{VXMCD_ACQUISITION_SINGLE, "single"},
                                          {VXMCD_ACQUISITION_SERIES, "series"},
                                          {VXMCD_ACQUISITION_OVERLAP, "overlap"}};
constexpr TBitWord kReadModes[] = {
    {VXMCD_READ_FULL_IMAGE, "full image"}, {VXMCD_READ_SUB_IMAGE, "sub-image"}, {VXMCD_READ_TRACKS, "tracks"}};
constexpr TBitWord kTriggerModes[] = {{VXMCD_TRIGGER_INTERNAL, "internal"},
                                      {VXMCD_TRIGGER_EXTERNAL, "external"},
                                      {VXMCD_TRIGGER_SOFTWARE, "software"},
                                      {VXMCD_TRIGGER_EXTERNAL_START, "external-start"},
                                      {VXMCD_TRIGGER_EXTERNAL_EXPOSURE, "external-exposure"}};
constexpr TBitWord kSettable[] = {{VXMCD_SET_READOUT_RATE, "speed"},
                                  {VXMCD_SET_TEMPERATURE, "temperature"},
                                  {VXMCD_SET_BASELINE_CLAMP, "baseline clamp"},
                                  {VXMCD_SET_PRE_AMP_GAIN, "direct gain"},
                                  {VXMCD_SET_BINNING, "binning"},
                                  {VXMCD_SET_TRACKS, "tracks"},
                                  {VXMCD_SET_ALWAYS, ""}};
constexpr TBitWord kReadable[] = {{VXMCD_GET_TEMPERATURE, "temperature"}, {VXMCD_GET_ALWAYS, ""}};
constexpr TBitWord kFeatures[] = {{VXMCD_FEATURES_ALWAYS, ""},
                                  {VXMCD_FEATURE_FAN, "fan"},
                                  {VXMCD_FEATURE_FAN_LOW, "low fan"},
                                  {VXMCD_FEATURE_METADATA, "metadata"},
                                  {VXMCD_FEATURE_EXPOSURE_START_EVENT, "exposure start event"},
                                  {VXMCD_FEATURE_EXPOSURE_END_EVENT, "exposure end event"}};

std::vector<std::string> Words(unsigned int bits, std::span<const TBitWord> table)
{
  std::vector<std::string> words;
  for (const TBitWord& entry : table) {
    if ((bits & entry.bits) != 0 && entry.word[0] != '\0') words.emplace_back(entry.word);
    bits &= ~entry.bits;
  }
  for (unsigned int bit = 1; bit != 0; bit <<= 1) {
    if ((bits & bit) == 0) continue;
    char number[16];
    std::snprintf(number, sizeof number, "0x%x", bit);
    words.emplace_back(number);
  }
  return words;
}

std::string CameraType(unsigned int type)
{
  switch (type) {
  case VXMCD_CAMERA_TRELLIS:
    return "TRELLIS";
  case VXMCD_CAMERA_RQ512:
    return "RQ512";
  case VXMCD_CAMERA_KESTRA:
    return "KESTRA";
  case VXMCD_CAMERA_OTHER:
    return "other";
  default:
    return std::to_string(type);
  }
}

/// The words of a capability record, in the order of the bits. Bits that every camera has
/// have no word; bits that are not known appear as their number, "0x40".
struct TCapabilityWords
{
  std::vector<std::string> acquisitionModes;
  std::vector<std::string> readModes;
  std::vector<std::string> triggerModes;
  std::vector<std::string> settable;
  std::vector<std::string> readable;
  std::vector<std::string> features;
  std::string cameraType;
};

TCapabilityWords CapabilityWords(const vxmcd_Capabilities& capabilities)
{
  return {Words(capabilities.acquisitionModes, kAcquisitionModes),
          Words(capabilities.readModes, kReadModes),
          TriggerWords(capabilities),
          Words(capabilities.settableFunctions, kSettable),
          Words(capabilities.readableFunctions, kReadable),
          Words(capabilities.features, kFeatures),
          CameraType(capabilities.cameraType)};
}

std::string Number(float number)
{
  char text[32];
  std::snprintf(text, sizeof text, "%.6g", static_cast<double>(number));
  return text;
}

std::string Joined(const std::vector<std::string>& words)
{
  std::string text;
  for (const std::string& word : words) text += (text.empty() ? "" : ", ") + word;
  return text.empty() ? "none" : text;
}

std::string FirmwareDate(unsigned int date)
{
  char text[48];
  std::snprintf(text, sizeof text, "%04u-%02u-%02u", date / 10000, date / 100 % 100, date % 100);
  return text;
}

template <typename Value>
std::string WhyNothing(const TAnswer<Value>& answer)
{
  if (answer.code == RC_SUCCESS) return "- (not reported)";
  return std::string("- (") + answer.function + ": " + vxmcd_GetResultName(answer.code) + ")";
}

/// The lines, one for each answer.
class TLines
{
public:
  void Put(const std::string& what, const std::string& text)
  {
    text_ += what + std::string(what.size() < 22 ? 22 - what.size() : 0, ' ') + " " + text + "\n";
  }
  template <typename Value, typename Formatter>
  void Add(const std::string& what, const TAnswer<Value>& answer, const Formatter& format)
  {
    Put(what, answer.value ? format(*answer.value) : WhyNothing(answer));
  }
  const std::string& Text() const { return text_; }

private:
  std::string text_;
};

std::string AsText(const std::string& text)
{
  return text;
}

std::string AsNumber(long number)
{
  return std::to_string(number);
}

std::string AsSwitch(bool on)
{
  return on ? "on" : "off";
}

std::string AsSeconds(float seconds)
{
  return Number(seconds) + " s";
}

std::string AsMegahertz(float megahertz)
{
  return Number(megahertz) + " MHz";
}

std::string AsCelsius(float celsius)
{
  return Number(celsius) + " C";
}

void AddCapabilities(TLines& lines, const TAnswer<vxmcd_Capabilities>& answer)
{
  const auto add = [&](const char* what, std::vector<std::string> TCapabilityWords::*words) {
    lines.Add(what, answer,
              [&](const vxmcd_Capabilities& record) { return Joined(CapabilityWords(record).*words); });
  };
  lines.Add("camera type", answer,
            [](const vxmcd_Capabilities& record) { return CapabilityWords(record).cameraType; });
  add("acquisition modes", &TCapabilityWords::acquisitionModes);
  add("read modes", &TCapabilityWords::readModes);
  add("trigger modes", &TCapabilityWords::triggerModes);
  add("settable", &TCapabilityWords::settable);
  add("readable", &TCapabilityWords::readable);
  add("features", &TCapabilityWords::features);
}

std::string GainLine(const TGainAnswers& gain)
{
  std::string line = gain.text.value.value_or(WhyNothing(gain.text));
  line += gain.factor.value ? ", factor " + Number(*gain.factor.value) : ", factor " + WhyNothing(gain.factor);
  if (!gain.usableWith.value) return line + ", with " + WhyNothing(gain.usableWith);
  std::string combinations;
  for (const TPair<int>& with : *gain.usableWith.value)
    combinations += (combinations.empty() ? " channel " : " or channel ") + std::to_string(with.first) +
                    " amplifier " + std::to_string(with.second);
  return line + ", with" + (combinations.empty() ? " no channel and amplifier" : combinations);
}

void AddReadout(TLines& lines, const TCameraDescription& d)
{
  for (std::size_t index = 0; index < d.channelBits.size(); ++index)
    lines.Add("AD channel " + std::to_string(index), d.channelBits[index],
              [](int bits) { return std::to_string(bits) + " bits"; });
  for (std::size_t index = 0; index < d.amplifiers.size(); ++index) {
    const TAmplifierAnswers& amplifier = d.amplifiers[index];
    lines.Add("amplifier " + std::to_string(index), amplifier.description, [&](const std::string& text) {
      const TAnswer<float>& fastest = amplifier.maximumMegahertz;
      return text + ", at most " + (fastest.value ? AsMegahertz(*fastest.value) : WhyNothing(fastest));
    });
  }
  for (std::size_t index = 0; index < d.speedsMegahertz.size(); ++index)
    lines.Add("speed " + std::to_string(index), d.speedsMegahertz[index], AsMegahertz);
  for (std::size_t index = 0; index < d.gains.size(); ++index)
    lines.Put("gain " + std::to_string(index), GainLine(d.gains[index]));
  lines.Add("baseline clamp", d.isBaselineClamped, AsSwitch);
}

void AddCooling(TLines& lines, const TCameraDescription& d)
{
  lines.Add("temperature", d.temperature, [](const TTemperature& temperature) {
    const char* state = temperature.state == RC_SUCCESS ? "" : vxmcd_GetResultName(temperature.state);
    return AsCelsius(temperature.celsius) + (state[0] != '\0' ? std::string(", ") + state : "");
  });
  lines.Add("target temperature", d.targetCelsius, AsCelsius);
  lines.Add("target range", d.targetRange, [](const TPair<int>& range) {
    return std::to_string(range.first) + " C to " + std::to_string(range.second) + " C";
  });
  lines.Add("cooler", d.isCoolerOn, AsSwitch);
}

void AddTimes(TLines& lines, const TCameraDescription& d)
{
  lines.Add("exposure", d.timings, [](const TTimings& times) { return AsSeconds(times.exposureSeconds); });
  lines.Add("accumulation cycle", d.timings,
            [](const TTimings& times) { return AsSeconds(times.accumulateSeconds); });
  lines.Add("kinetic cycle", d.timings, [](const TTimings& times) { return AsSeconds(times.kineticSeconds); });
  lines.Add("maximum exposure", d.maximumExposureSeconds, AsSeconds);
  lines.Add("readout time", d.readoutSeconds, AsSeconds);
}

/// The JSON object, with the calls that failed.
class TJsonAnswers
{
public:
  template <typename Value, typename Converter>
  Json Of(const TAnswer<Value>& answer, const Converter& convert)
  {
    if (answer.value) return convert(*answer.value);
    if (answer.code != RC_SUCCESS)
      errors_.push_back({{"function", answer.function},
                         {"code", answer.code},
                         {"name", vxmcd_GetResultName(answer.code)},
                         {"meaning", vxmcd_GetResultMeaning(answer.code)}});
    return nullptr;
  }
  template <typename Value>
  Json Of(const TAnswer<Value>& answer)
  {
    return Of(answer, [](const Value& value) { return Json(value); });
  }
  Json Of(const TAnswer<float>& answer) { return Of(answer, JsonNumber); }
  const Json& Errors() const { return errors_; }

private:
  Json errors_ = Json::array();
};

Json CapabilitiesJson(const vxmcd_Capabilities& record)
{
  const TCapabilityWords words = CapabilityWords(record);
  return {{"camera_type", words.cameraType}, {"acquisition_modes", words.acquisitionModes},
          {"read_modes", words.readModes},   {"trigger_modes", words.triggerModes},
          {"settable", words.settable},      {"readable", words.readable},
          {"features", words.features}};
}

Json GainJson(const TGainAnswers& gain, TJsonAnswers& answers)
{
  const auto combinations = [](const std::vector<TPair<int>>& usable) {
    Json list = Json::array();
    for (const TPair<int>& with : usable) list.push_back({{"channel", with.first}, {"amplifier", with.second}});
    return list;
  };
  return {{"text", answers.Of(gain.text)},
          {"factor", answers.Of(gain.factor)},
          {"with", answers.Of(gain.usableWith, combinations)}};
}

void PutReadout(Json& json, const TCameraDescription& d, TJsonAnswers& answers)
{
  const auto list = [](const auto& entries, const auto& convert) {
    Json array = Json::array();
    for (const auto& entry : entries) array.push_back(convert(entry));
    return array;
  };
  json["channels"] = list(d.channelBits, [&](const TAnswer<int>& bits) {
    return Json{{"bits", answers.Of(bits)}};
  });
  json["amplifiers"] = list(d.amplifiers, [&](const TAmplifierAnswers& amplifier) {
    return Json{{"description", answers.Of(amplifier.description)},
                {"maximum_mhz", answers.Of(amplifier.maximumMegahertz)}};
  });
  json["speeds_mhz"] = list(d.speedsMegahertz, [&](const TAnswer<float>& speed) { return answers.Of(speed); });
  json["gains"] = list(d.gains, [&](const TGainAnswers& gain) { return GainJson(gain, answers); });
  json["baseline_clamp"] = answers.Of(d.isBaselineClamped);
}

void PutCooling(Json& json, const TCameraDescription& d, TJsonAnswers& answers)
{
  json["temperature"] = answers.Of(d.temperature, [](const TTemperature& temperature) {
    return Json{{"celsius", JsonNumber(temperature.celsius)}, {"state", vxmcd_GetResultName(temperature.state)}};
  });
  json["target_celsius"] = answers.Of(d.targetCelsius);
  json["target_range_celsius"] = answers.Of(d.targetRange, [](const TPair<int>& range) {
    return Json{{"minimum", range.first}, {"maximum", range.second}};
  });
  json["cooler_on"] = answers.Of(d.isCoolerOn);
}

} // namespace

std::vector<std::string> TriggerWords(const vxmcd_Capabilities& capabilities)
{
  return Words(capabilities.triggerModes, kTriggerModes);
}

std::string DescriptionText(const TCameraDescription& d)
{
  TLines lines;
  lines.Add("model", d.model, AsText);
  lines.Add("serial number", d.serial, AsNumber);
  lines.Add("firmware", d.firmware, [](const TFirmware& firmware) {
    return FirmwareDate(firmware.date) + " build " + std::to_string(firmware.build);
  });
  lines.Put("source", d.source.value_or("- (not reported)"));
  lines.Add("handle", d.handle, AsNumber);
  lines.Add("library version", d.libraryVersion, AsText);
  lines.Add("sensor size", d.sensorPixels, [](const TPair<int>& size) {
    return std::to_string(size.first) + " x " + std::to_string(size.second) + " pixels";
  });
  lines.Add("pixel size", d.pixelMicrometres,
            [](const TPair<float>& size) { return Number(size.first) + " x " + Number(size.second) + " um"; });
  AddCapabilities(lines, d.capabilities);
  lines.Add("horizontal binning", d.maximumHorizontalBinning,
            [](int factor) { return "up to " + std::to_string(factor); });
  lines.Add("vertical binning", d.maximumVerticalBinning,
            [](int factor) { return "up to " + std::to_string(factor); });
  AddReadout(lines, d);
  AddCooling(lines, d);
  lines.Add("camera memory in use", d.memoryUsedPercent,
            [](int percent) { return std::to_string(percent) + " %"; });
  AddTimes(lines, d);
  lines.Add("ring of frame buffers", d.ringBytes, [](long bytes) { return std::to_string(bytes) + " bytes"; });
  return lines.Text();
}

std::string DescriptionJson(const TCameraDescription& d)
{
  TJsonAnswers answers;
  Json json;
  json["camera"] = d.number;
  json["handle"] = answers.Of(d.handle);
  json["model"] = answers.Of(d.model);
  json["serial"] = answers.Of(d.serial);
  json["firmware"] = answers.Of(d.firmware, [](const TFirmware& firmware) {
    return Json{{"date", FirmwareDate(firmware.date)}, {"build", firmware.build}};
  });
  json["source"] = JsonOrNull(d.source);
  json["library_version"] = answers.Of(d.libraryVersion);
  json["sensor_pixels"] = answers.Of(d.sensorPixels, [](const TPair<int>& size) {
    return Json{{"width", size.first}, {"height", size.second}};
  });
  json["pixel_um"] = answers.Of(d.pixelMicrometres, [](const TPair<float>& size) {
    return Json{{"width", JsonNumber(size.first)}, {"height", JsonNumber(size.second)}};
  });
  json["capabilities"] = answers.Of(d.capabilities, CapabilitiesJson);
  json["maximum_binning"] = {{"horizontal", answers.Of(d.maximumHorizontalBinning)},
                             {"vertical", answers.Of(d.maximumVerticalBinning)}};
  PutReadout(json, d, answers);
  PutCooling(json, d, answers);
  json["memory_used_percent"] = answers.Of(d.memoryUsedPercent);
  json["timings_s"] = answers.Of(d.timings, [](const TTimings& times) {
    return Json{{"exposure", JsonNumber(times.exposureSeconds)},
                {"accumulation_cycle", JsonNumber(times.accumulateSeconds)},
                {"kinetic_cycle", JsonNumber(times.kineticSeconds)}};
  });
  json["maximum_exposure_s"] = answers.Of(d.maximumExposureSeconds);
  json["readout_s"] = answers.Of(d.readoutSeconds);
  json["ring_bytes"] = answers.Of(d.ringBytes);
  json["errors"] = answers.Errors();
  return JsonLine(json);
}

} // namespace vxtool
