// SPDX-License-Identifier: MIT
// Simulated cameras like those of a trace.
#include "tools/TraceConfig.h"

#include "tools/TraceText.h"
#include "vxcore.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <map>
#include <set>

namespace vxtool {

namespace {

constexpr std::array<const char*, 3> kModels = {"TRELLIS CMOS", "RQ512_LX", "TARN 1M"};

/// What the trace shows of a feature, as it was seen first.
struct TFeature
{
  std::string value;            ///< of a text, or of the sensor's size
  std::set<std::string> minima; ///< several ones depend on other settings, as they do in the simulator
  std::set<std::string> maxima;
  std::int64_t textCount = 0;
  std::map<std::int64_t, std::string> texts; ///< of an enumerated feature, by index

  bool HasTexts() const
  {
    return textCount > 0 && std::ssize(texts) == textCount && texts.begin()->first == 0 &&
           texts.rbegin()->first == textCount - 1;
  }
};

struct TSeenCamera
{
  std::map<std::string, TFeature> features;
  std::set<std::string> missing;
  std::map<std::pair<std::string, std::string>, std::set<std::uint32_t>> codes; ///< by function and feature
  bool isAcquiring = false;                                                     ///< at this place of the trace
};

void SetOnce(std::string& target, const TTraceValue& value)
{
  if (target.empty()) target = value.kind == TTraceValue::Kind::Text ? value.text : value.Text();
}

// Areas limit each other, and so do not have limits of their own.
bool HasOwnLimits(const std::string& feature)
{
  return !feature.starts_with("AOI");
}

// Whether the present value or a run is why the call was refused: a simulated camera refuses it for itself.
bool IsOfTheMoment(const TSeenCamera& camera, std::uint32_t code)
{
  return code == VX_ERR_INDEX_NOT_IMPLEMENTED || code == VX_ERR_STRING_NOT_AVAILABLE ||
         (code == VX_ERR_NOT_WRITABLE && camera.isAcquiring);
}

void See(TSeenCamera& camera, const TTraceCall& call, const std::string& name)
{
  const std::string& function = call.function->name;
  if (function == "VX_IsImplemented" && call.Value("flag").whole == 0) camera.missing.insert(name);
  TFeature& feature = camera.features[name];
  if (function == "VX_GetString") SetOnce(feature.value, call.Value("value"));
  if (function == "VX_GetInt" && name.starts_with("Sensor")) SetOnce(feature.value, call.Value("value"));
  if (function.ends_with("Min") && HasOwnLimits(name)) feature.minima.insert(call.Value("minimum").Text());
  if (function.ends_with("Max") && HasOwnLimits(name)) feature.maxima.insert(call.Value("maximum").Text());
  if (function == "VX_GetEnumeratedCount" || function == "VX_GetEnumCount")
    feature.textCount = call.Value("count").whole;
  if (function == "VX_GetEnumeratedString" || function == "VX_GetEnumStringByIndex")
    feature.texts.emplace(call.Value("index").whole, call.Value("text").text);
}

/// What the trace shows of all cameras.
struct TSeenCameras
{
  std::int64_t count = 0;                      ///< that were attached
  std::map<std::int64_t, TSeenCamera> cameras; ///< those that were opened, by index
};

// No program has more; a damaged trace may say so.
constexpr std::int64_t kMaxCameras = 128;

TSeenCameras CamerasOf(const TTraceFile& file)
{
  TSeenCameras seen;
  std::map<std::int64_t, std::int64_t> indices; // by handle
  for (const TTraceCall& call : file.Calls()) {
    if (call.function->isApi || call.state != CallState::Ended) continue;
    if (call.function->name == "VX_Open" && call.Code() == VX_SUCCESS) {
      const std::int64_t index = call.Value("deviceIndex").whole;
      if (index < 0 || index >= kMaxCameras) continue;
      indices[call.Value("handle").whole] = index;
      seen.cameras.try_emplace(index);
      seen.count = std::max(seen.count, index + 1);
      continue;
    }
    const std::string name = call.Value("feature").text;
    if (name == "DeviceCount" && call.function->name == "VX_GetInt" && call.Code() == VX_SUCCESS)
      seen.count = std::clamp(call.Value("value").whole, seen.count, kMaxCameras);
    const auto found = indices.find(call.Value("handle").whole);
    if (name.empty() || found == indices.end()) continue;
    TSeenCamera& camera = seen.cameras[found->second];
    if (call.function->name == "VX_Command" && name == "AcquisitionStart" && call.Code() == VX_SUCCESS)
      camera.isAcquiring = true;
    if (call.function->name == "VX_Command" && name == "AcquisitionStop") camera.isAcquiring = false;
    if (IsOfTheMoment(camera, call.Code())) continue;
    camera.codes[{call.function->name, name}].insert(call.Code());
    if (call.Code() == VX_SUCCESS) See(camera, call, name);
  }
  return seen;
}

// One of the simulated models, the nearest one where the camera is none of them.
std::string ModelOf(const TSeenCamera& camera)
{
  const auto model = camera.features.find("CameraModel");
  if (model != camera.features.end() &&
      std::find(kModels.begin(), kModels.end(), model->second.value) != kModels.end())
    return model->second.value;
  const auto has = [&](const char* name) {
    return camera.codes.count({"VX_IsImplemented", name}) > 0 && camera.missing.count(name) == 0;
  };
  return has("SimplePreAmpGainControl") ? kModels[0] : has("TriggerConfiguration") ? kModels[2] : kModels[1];
}

std::string FeatureText(const std::string& section, const std::string& name, const TFeature& feature)
{
  std::string text;
  const auto line = [&text](const char* key, const std::string& value) {
    if (!value.empty()) text += std::string(key) + " = " + value + "\n";
  };
  line("Value", feature.value);
  if (feature.minima.size() == 1) line("Min", *feature.minima.begin());
  if (feature.maxima.size() == 1) line("Max", *feature.maxima.begin());
  if (feature.HasTexts()) {
    std::string texts;
    for (const auto& [index, one] : feature.texts) texts += (texts.empty() ? "" : " | ") + one;
    line("Texts", texts);
  }
  return text.empty() ? "" : "[" + section + "." + name + "]\n" + text;
}

// A call that was sometimes answered otherwise depends on the other settings, as it does in the simulator.
bool IsRefusal(const std::set<std::uint32_t>& codes)
{
  if (codes.size() != 1) return false;
  const std::uint32_t code = *codes.begin();
  return code != VX_SUCCESS && code != VX_ERR_NOT_IMPLEMENTED && code != VX_ERR_INVALID_HANDLE &&
         code != VX_ERR_NOT_INITIALISED && code != VX_ERR_TIMED_OUT;
}

} // namespace

std::string ConfigOf(const TTraceFile& file)
{
  const TSeenCameras seen = CamerasOf(file);
  if (seen.count == 0) return "";
  std::string text = "; Simulated cameras like those of a trace of " + file.Fact("program") +
                     "\n[Simulator]\nCameras = " + std::to_string(seen.count) + "\n";
  std::string rules;
  for (const auto& [index, camera] : seen.cameras) {
    const std::string section = "Camera" + std::to_string(index);
    std::string removed;
    for (const std::string& name : camera.missing) removed += (removed.empty() ? "" : ", ") + name;
    text += "\n[" + section + "]\nModel = " + ModelOf(camera) + "\n" +
            (removed.empty() ? "" : "Remove = " + removed + "\n");
    for (const auto& [name, feature] : camera.features)
      if (camera.missing.count(name) == 0 && name != "DeviceSource") text += FeatureText(section, name, feature);
    for (const auto& [call, codes] : camera.codes)
      if (IsRefusal(codes) && camera.missing.count(call.second) == 0)
        rules += "Rule = call " + call.first + " feature " + call.second + " device " + std::to_string(index) +
                 " rc " + std::to_string(*codes.begin()) + "\n";
  }
  return rules.empty() ? text : text + "\n[Faults]\n" + rules;
}

ExitCode WriteTraceConfig(const TTraceOptions& options)
{
  TTraceFile file;
  if (!ReadTrace(file, options.file)) return ExitCode::InputError;
  const std::string text = ConfigOf(file);
  if (text.empty())
    return Fail(ExitCode::CameraError,
                options.file + ": has no camera; were calls into the feature library recorded?");
  return Print(text) ? ExitCode::Success : ExitCode::OutputError;
}

} // namespace vxtool
