// SPDX-License-Identifier: MIT
// Settings are read and written by the names of their features.
#include "tools/check/TKeptSettings.h"

#include "tools/KnownFeatures.h"
#include "tools/TFeatureDevice.h"

#include <algorithm>

namespace vxtool {

namespace {

constexpr int kMaxPasses = 5; ///< what a setting takes depends on others
constexpr const char* kLayout = "AOILayout";
constexpr const char* kTracks = "Track";

// Not settings but what the next command to a register or a bus is to do, or which track others are about.
bool IsTransfer(const std::string& name)
{
  return name.starts_with("Register") || name.find("I2C") != std::string::npos || name == "AOISelector";
}

void Set(int handle, const std::string& name, const std::string& value)
{
  TCameraFeature feature;
  SetFeature(handle, {name, value}, feature);
}

} // namespace

std::string TKeptSettings::Read(int camera)
{
  camera_ = camera;
  TFeatureDevice device;
  if (const int code = device.Open(camera); code != VX_SUCCESS) return FeatureCodeText("VX_Open", code);
  for (const TKnownFeature& known : KnownFeatures()) {
    TCameraFeature feature;
    if (IsTransfer(known.name) || !ReadFeature(device.Handle(), known.name, feature) || !feature.isWritable ||
        feature.kind == FeatureKind::String || !feature.whyNotRead.empty())
      continue;
    const std::string value = FeatureValueText(feature.value);
    if (!value.empty()) settings_.push_back({known.name, value});
  }
  ReadTracks(device.Handle());
  return "";
}

// The rows of tracks are features of the track layout alone.
void TKeptSettings::ReadTracks(int handle)
{
  const std::optional<std::string> layout = FeatureText(handle, kLayout);
  if (!layout) return;
  Set(handle, kLayout, kTracks);
  const int count = FeatureText(handle, kLayout) == kTracks
                        ? std::atoi(FeatureText(handle, "AOICount").value_or("0").c_str())
                        : 0;
  for (int track = 1; track <= count; ++track) {
    Set(handle, "AOISelector", std::to_string(track));
    tracks_.push_back({FeatureText(handle, "AOITop").value_or(""), FeatureText(handle, "AOIVBin").value_or("")});
  }
  Set(handle, kLayout, *layout);
}

void TKeptSettings::PutBackTracks(int handle) const
{
  if (tracks_.empty()) return;
  const std::optional<std::string> layout = FeatureText(handle, kLayout);
  Set(handle, kLayout, kTracks);
  Set(handle, "AOICount", std::to_string(tracks_.size()));
  for (std::size_t track = 0; track < tracks_.size(); ++track) {
    Set(handle, "AOISelector", std::to_string(track + 1));
    Set(handle, "AOITop", tracks_[track].top);
    Set(handle, "AOIVBin", tracks_[track].height);
  }
  Set(handle, kLayout, layout.value_or("Image"));
}

std::string TKeptSettings::PutBack()
{
  TFeatureDevice device;
  if (const int code = device.Open(camera_); code != VX_SUCCESS)
    return "the settings of the camera cannot be put back: " + FeatureCodeText("VX_Open", code);
  PutBackTracks(device.Handle());
  std::string changed;
  for (int pass = 0; pass < kMaxPasses; ++pass) {
    changed.clear();
    for (const TFeatureSetting& setting : settings_) {
      if (FeatureText(device.Handle(), setting.name) == setting.value) continue;
      Set(device.Handle(), setting.name, setting.value);
      if (FeatureText(device.Handle(), setting.name) == setting.value) continue;
      changed += (changed.empty() ? "" : ", ") + setting.name;
    }
    // One that was right may have been changed by a later one: only a pass that finds all of them right is the last.
    const auto isRight = [&device](const TFeatureSetting& setting) {
      return FeatureText(device.Handle(), setting.name) == setting.value;
    };
    if (std::all_of(settings_.begin(), settings_.end(), isRight)) return "";
  }
  return "these settings of the camera are not what they were: " + changed;
}

} // namespace vxtool
