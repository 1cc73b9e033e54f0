// SPDX-License-Identifier: MIT
// Features as lines and as JSON.
#include "tools/FeatureCommands.h"

#include "tools/CameraFeature.h"
#include "tools/Json.h"
#include "tools/KnownFeatures.h"
#include "tools/TFeatureDevice.h"
#include "tools/TFlatCamera.h"
#include "vxmcd.h"

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
      [](const auto& held) -> Json {
        if constexpr (std::is_same_v<std::decay_t<decltype(held)>, std::monostate>)
          return nullptr;
        else
          return held;
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
    const std::string text = options.isJson ? JsonLine({{"camera", options.camera}, {"features", json_}}) : text_;
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

} // namespace

ExitCode GetFeatures(const TOptions& options)
{
  TFeatureDevice device;
  if (const auto problem = WhyNotOpen(device, options.camera)) return Fail(ExitCode::NoCamera, *problem);
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
  if (const auto problem = WhyNotOpen(device, options.camera)) return Fail(ExitCode::NoCamera, *problem);
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
