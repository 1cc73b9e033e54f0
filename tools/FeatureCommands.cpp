// SPDX-License-Identifier: MIT
// Features as lines and as JSON.
#include "tools/FeatureCommands.h"

#include "tools/CameraFeature.h"
#include "tools/FeatureSources.h"
#include "tools/Json.h"
#include "tools/KnownFeatures.h"
#include "tools/TFeatureDevice.h"
#include "tools/TFlatCamera.h"
#include "vxmcd.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace vxtool {

namespace {

constexpr const char* kSimulated = "simulated";

const char* KindName(FeatureKind kind)
{
  switch (kind) {
  case FeatureKind::Enumerated:
    return "enumerated";
  case FeatureKind::Integer:
    return "integer";
  case FeatureKind::Float:
    return "float";
  case FeatureKind::Boolean:
    return "boolean";
  case FeatureKind::String:
    return "string";
  case FeatureKind::Command:
    break;
  }
  return "command";
}

std::string ValueText(const TCameraFeature& feature)
{
  if (feature.kind == FeatureKind::Command) return "(a command)";
  if (!feature.whyNotRead.empty()) return "- (" + feature.whyNotRead + ")";
  const std::string unit = UnitOfFeature(feature.name);
  return FeatureValueText(feature.value) + (unit.empty() ? "" : " " + unit);
}

// What a feature can be set to: limits, words.
std::string ChoicesText(const TCameraFeature& feature)
{
  std::string text;
  for (const TFeatureWord& word : feature.words)
    text += (text.empty() ? "" : ", ") + word.text + (word.isAvailable ? "" : " (not now)");
  const std::string minimum = FeatureValueText(feature.minimum);
  const std::string maximum = FeatureValueText(feature.maximum);
  if (!minimum.empty() && !maximum.empty()) text = minimum + " to " + maximum;
  return text;
}

std::string FeatureLine(const TCameraFeature& feature)
{
  const std::string choices = feature.isWritable ? ChoicesText(feature) : "";
  const bool isReadOnly = !feature.isWritable && feature.kind != FeatureKind::Command;
  const std::string remark = isReadOnly ? "read only" : choices;
  char line[96];
  std::snprintf(line, sizeof line, "%-26s ", feature.name.c_str());
  std::string text = (feature.name.size() > 26 ? feature.name + " " : line) + ValueText(feature);
  if (!remark.empty()) text += std::string(text.size() < 52 ? 52 - text.size() : 1, ' ') + "  " + remark;
  return text + "\n";
}

Json ValueJson(const TFeatureValue& value)
{
  return std::visit(
      [](const auto& present) -> Json {
        if constexpr (std::is_same_v<std::decay_t<decltype(present)>, std::monostate>)
          return nullptr;
        else
          return present;
      },
      value);
}

Json FeatureJson(const TCameraFeature& feature)
{
  Json json = {{"name", feature.name},
               {"kind", KindName(feature.kind)},
               {"value", ValueJson(feature.value)},
               {"unit", JsonTextOrNull(UnitOfFeature(feature.name))},
               {"writable", feature.isWritable},
               {"minimum", ValueJson(feature.minimum)},
               {"maximum", ValueJson(feature.maximum)},
               {"problem", JsonTextOrNull(feature.whyNotRead)}};
  Json words = Json::array();
  for (const TFeatureWord& word : feature.words)
    words.push_back({{"text", word.text}, {"available", word.isAvailable}});
  json["words"] = feature.kind == FeatureKind::Enumerated ? words : Json(nullptr);
  return json;
}

/// The features that a command has read, for its output.
class TReportedFeatures
{
public:
  void Add(const TCameraFeature& feature)
  {
    text_ += FeatureLine(feature);
    json_.push_back(FeatureJson(feature));
  }
  bool IsEmpty() const { return text_.empty(); }
  ExitCode PrintAll(const TOptions& options) const
  {
    const std::string text =
        options.isJson ? JsonLine({{"camera", options.camera.number}, {"features", json_}}) : text_;
    return Print(text) ? ExitCode::Success : ExitCode::OutputError;
  }

private:
  std::string text_;
  Json json_ = Json::array();
};

// Nothing when the device is open, else what is said.
std::optional<std::string> WhyNotOpen(TFeatureDevice& device, int number)
{
  if (std::optional<std::string> problem = WhyNoCamera(number)) return problem;
  const int code = device.Open(number);
  return code == VX_SUCCESS ? std::nullopt : std::optional(FeatureCodeText("VX_Open", code));
}

// "ExposureTime * 1e-06 - 2": the camera's feature, and what is done with its values.
std::string BehindText(const TFeatureSource& source)
{
  if (source.behind.empty()) return "-";
  std::string text = source.behind;
  if (source.scale != 1.0) text += " * " + FeatureValueText(source.scale);
  if (source.offset != 0.0)
    text += (source.offset < 0.0 ? " - " : " + ") + FeatureValueText(std::fabs(source.offset));
  return text;
}

struct TSourcedFeature
{
  TFeatureSource source;
  TCameraFeature feature;
  bool isThere = false;
};

std::string SourcesText(const std::vector<TSourcedFeature>& features)
{
  std::size_t widths[] = {sizeof "feature" - 1, sizeof "origin" - 1, sizeof "camera's feature" - 1};
  for (const auto& [source, feature, isThere] : features) {
    widths[0] = std::max(widths[0], source.name.size());
    widths[1] = std::max(widths[1], source.origin.size());
    widths[2] = std::max(widths[2], BehindText(source).size());
  }
  const auto line = [&widths](const std::string& name, const std::string& origin, const std::string& behind,
                              const std::string& value) {
    return Padded(name, widths[0]) + "  " + Padded(origin, widths[1]) + "  " + Padded(behind, widths[2]) + "  " +
           value + "\n";
  };
  std::string text = line("feature", "origin", "camera's feature", "value");
  for (const auto& [source, feature, isThere] : features)
    text += line(source.name, source.origin, BehindText(source),
                 isThere ? ValueText(feature) : "- (" + WhyNoFeature(source) + ")");
  return text;
}

Json SourceJson(const TSourcedFeature& one)
{
  const TFeatureSource& source = one.source;
  const bool hasNumbers = !source.behind.empty();
  return {{"name", source.name},
          {"origin", source.origin},
          {"camera_feature", JsonTextOrNull(source.behind)},
          {"camera_features_looked_for", source.candidates},
          {"scale", hasNumbers ? Json(source.scale) : Json(nullptr)},
          {"offset", hasNumbers ? Json(source.offset) : Json(nullptr)},
          {"implemented", one.isThere},
          {"value", one.isThere ? ValueJson(one.feature.value) : Json(nullptr)},
          {"unit", JsonTextOrNull(UnitOfFeature(source.name))},
          {"problem", JsonTextOrNull(one.isThere ? one.feature.whyNotRead : WhyNoFeature(source))}};
}

} // namespace

ExitCode ShowFeatureSources(const TOptions& options)
{
  TFeatureDevice device;
  if (const auto problem = WhyNotOpen(device, options.camera.number)) return Fail(ExitCode::NoCamera, *problem);
  std::vector<TSourcedFeature> features;
  Json list = Json::array();
  for (const TFeatureSource& source : FeatureSourcesOf(device.Handle())) {
    if (source.name == kFeatureSources) continue;
    TSourcedFeature& one = features.emplace_back(TSourcedFeature{source, {}});
    one.isThere = ReadFeature(device.Handle(), source.name, one.feature);
    list.push_back(SourceJson(one));
  }
  if (features.empty()) return Fail(ExitCode::CameraError, NoFeatureText(device.Handle(), "CameraModel"));
  const Json source = JsonOrNull(FeatureText(device.Handle(), "DeviceSource"));
  const std::string text =
      options.isJson ? JsonLine({{"camera", options.camera.number}, {"source", source}, {"features", list}})
                     : SourcesText(features);
  return Print(text) ? ExitCode::Success : ExitCode::OutputError;
}

ExitCode GetFeatures(const TOptions& options)
{
  TFeatureDevice device;
  if (const auto problem = WhyNotOpen(device, options.camera.number)) return Fail(ExitCode::NoCamera, *problem);
  TReportedFeatures report;
  TCameraFeature feature;
  if (options.featureNames.empty()) {
    for (const TKnownFeature& known : KnownFeatures())
      if (ReadFeature(device.Handle(), known.name, feature)) report.Add(feature);
    if (report.IsEmpty()) return Fail(ExitCode::CameraError, NoFeatureText(device.Handle(), "CameraModel"));
    return report.PrintAll(options);
  }
  for (const std::string& name : options.featureNames) {
    if (!ReadFeature(device.Handle(), name, feature))
      return Fail(ExitCode::CameraError, name + ": " + NoFeatureText(device.Handle(), name));
    report.Add(feature);
  }
  return report.PrintAll(options);
}

ExitCode SetFeatures(const TOptions& options)
{
  TFeatureDevice device;
  if (const auto problem = WhyNotOpen(device, options.camera.number)) return Fail(ExitCode::NoCamera, *problem);
  TCameraFeature feature;
  std::string done;
  for (const TFeatureSetting& setting : options.featureSettings) {
    if (const std::string problem = SetFeature(device.Handle(), setting, feature); !problem.empty())
      return Fail(ExitCode::CameraError,
                  setting.name + ": " + problem + (done.empty() ? "" : "; set before that: " + done));
    done += (done.empty() ? "" : ", ") + setting.name;
  }
  TReportedFeatures report; // read at the end: a later one may have changed an earlier one
  for (const TFeatureSetting& setting : options.featureSettings)
    if (ReadFeature(device.Handle(), setting.name, feature)) report.Add(feature);
  if (ReadFeature(device.Handle(), "DeviceSource", feature) && feature.value == TFeatureValue(kSimulated))
    Say("a simulated camera has its first settings again when it is closed, as now; acquire --set sets features "
        "for a run");
  return report.PrintAll(options);
}

} // namespace vxtool
