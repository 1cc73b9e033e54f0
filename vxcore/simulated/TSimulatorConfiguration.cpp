// SPDX-License-Identifier: MIT
// Reads the simulator's configuration: INI sections into plain values, every mistake named.
#include "vxcore/simulated/TSimulatorConfiguration.h"

#include "utility/utf8.h"
#include "vxcore/simulated/TCameraFeatures.h"
#include "vxcore/simulated/TCameraModel.h"

#include <climits>
#include <cstdint>

namespace vxsim {

using namespace vxcore;

namespace {

/// One key of a camera section: its name, how its text becomes a setting (false: the text is not valid), and what is accepted,
/// for a message.
struct TKey
{
  const char* name;
  bool (*read)(const std::string& text, TCameraConfiguration& camera);
  const char* form;
};

constexpr const char* kSwitchForm = "on or off is";

/// "Internal 0x2C, Controller 0x4B"
bool ReadMissingI2c(const std::string& text, TCameraConfiguration& camera)
{
  camera.missingI2cDevices.clear();
  for (const std::string& piece : Split(text, ',')) {
    const size_t blank = piece.find(' ');
    const std::string bus = piece.substr(0, blank);
    TMissingI2cDevice missing;
    missing.onController = bus == "Controller";
    if (blank == std::string::npos || (bus != "Controller" && bus != "Internal")) return false;
    if (!ReadInteger(Trim(std::string_view(piece).substr(blank)), 0, 127, missing.address)) return false;
    camera.missingI2cDevices.push_back(missing);
  }
  return true;
}

const TKey kCameraKeys[] = {
    {"Model",
     [](const std::string& text, TCameraConfiguration& camera) {
       camera.model = text;
       return FindCameraModel(text) != nullptr;
     },
     "TRELLIS CMOS, RQ512_LX or TARN 1M is"},
    {"Clock",
     [](const std::string& text, TCameraConfiguration& camera) {
       camera.clock = text == "free" ? EClock::Free : EClock::Real;
       return text == "free" || text == "real";
     },
     "real or free is"},
    {"Source",
     [](const std::string& text, TCameraConfiguration& camera) {
       camera.source = text == "manual" ? ESource::Manual : ESource::Sensor;
       return text == "manual" || text == "sensor";
     },
     "sensor or manual is"},
    {"Scene",
     [](const std::string& text, TCameraConfiguration& camera) { return SceneFromName(text, camera.scene.kind); },
     "star field, beads, resolution chart, gradient, flat, dark, counter or stamp is"},
    {"Pattern",
     [](const std::string& text, TCameraConfiguration& camera) {
       return (text == "counter" || text == "stamp") && SceneFromName(text, camera.scene.kind);
     },
     "counter or stamp is"},
    {"Brightness",
     [](const std::string& text, TCameraConfiguration& camera) {
       return ReadNumber(text, 0.0, 1e6, camera.scene.brightness);
     },
     "a number from 0 to 1e6 is"},
    {"PhotonsPerSecond",
     [](const std::string& text, TCameraConfiguration& camera) {
       return ReadNumber(text, 0.0, 1e12, camera.scene.flatPhotonsPerSecond);
     },
     "a number from 0 to 1e12 is"},
    {"Background",
     [](const std::string& text, TCameraConfiguration& camera) {
       return ReadNumber(text, 0.0, 1e12, camera.scene.backgroundPhotonsPerSecond);
     },
     "a number from 0 to 1e12 is"},
    {"Objects",
     [](const std::string& text, TCameraConfiguration& camera) {
       return ReadInteger(text, 0, 1000000, camera.scene.objectCount);
     },
     "a whole number from 0 to 1000000 is"},
    {"Motion",
     [](const std::string& text, TCameraConfiguration& camera) {
       return ReadNumber(text, 0.0, 1e6, camera.scene.motionScale);
     },
     "a number from 0 to 1e6 is"},
    {"Noise",
     [](const std::string& text, TCameraConfiguration& camera) { return ReadSwitch(text, camera.scene.noise); },
     kSwitchForm},
    {"Gain",
     [](const std::string& text, TCameraConfiguration& camera) {
       return ReadNumber(text, 1e-6, 1e6, camera.gainElectronsPerCount.emplace());
     },
     "a number from 1e-6 to 1e6 is"},
    {"ReadNoise",
     [](const std::string& text, TCameraConfiguration& camera) {
       return ReadNumber(text, 0.0, 1e6, camera.readNoiseElectrons.emplace());
     },
     "a number from 0 to 1e6 is"},
    {"FullWell",
     [](const std::string& text, TCameraConfiguration& camera) {
       return ReadNumber(text, 1.0, 1e9, camera.fullWellElectrons.emplace());
     },
     "a number from 1 to 1e9 is"},
    {"DarkCurrent",
     [](const std::string& text, TCameraConfiguration& camera) {
       return ReadNumber(text, 0.0, 1e6, camera.darkElectronsPerSecond.emplace());
     },
     "a number from 0 to 1e6 is"},
    {"DarkDoubling",
     [](const std::string& text, TCameraConfiguration& camera) {
       return ReadNumber(text, 1.0, 100.0, camera.darkDoublingCelsius.emplace());
     },
     "a number from 1 to 100 is"},
    {"Ambient",
     [](const std::string& text, TCameraConfiguration& camera) {
       return ReadNumber(text, -50.0, 60.0, camera.ambientCelsius);
     },
     "a number from -50 to 60 is"},
    {"TimeScale",
     [](const std::string& text, TCameraConfiguration& camera) {
       return ReadNumber(text, 0.0, 10000.0, camera.timeScale);
     },
     "a number from 0 to 10000 is"},
    {"MissingI2C", ReadMissingI2c, "a list such as Internal 0x2D, Controller 0x4B is"},
    {"Seed",
     [](const std::string& text, TCameraConfiguration& camera) {
       return ReadInteger(text, uint64_t{0}, UINT64_MAX, camera.seed);
     },
     "a whole number from 0 to 2^64 - 1 is"},
    {"MemoryBytes",
     [](const std::string& text, TCameraConfiguration& camera) {
       return ReadInteger(text, 1LL, LLONG_MAX, camera.memoryBytes);
     },
     "a whole number from 1 is"},
    {"MemoryFrames",
     [](const std::string& text, TCameraConfiguration& camera) {
       return ReadInteger(text, 1LL, 100000000LL, camera.memoryFrames);
     },
     "a whole number from 1 to 100000000 is"},
    {"StridePadding",
     [](const std::string& text, TCameraConfiguration& camera) {
       return ReadInteger(text, 0, 65536, camera.stridePadding);
     },
     "a whole number from 0 to 65536 is"},
    {"TriggerPeriod",
     [](const std::string& text, TCameraConfiguration& camera) {
       return ReadNumber(text, 0.0, 1e6, camera.trigger.periodSeconds);
     },
     "a number from 0 to 1e6 is"},
    {"TriggerWidth",
     [](const std::string& text, TCameraConfiguration& camera) {
       return ReadNumber(text, 1e-9, 1e6, camera.trigger.widthSeconds);
     },
     "a number from 1e-9 to 1e6 is"},
    {"TriggerDelay",
     [](const std::string& text, TCameraConfiguration& camera) {
       return ReadNumber(text, 0.0, 1e6, camera.trigger.delaySeconds);
     },
     "a number from 0 to 1e6 is"},
};

bool ReadRemovals(const std::string& text, TCameraConfiguration& camera)
{
  for (const std::string& name : Split(text, ',')) {
    if (!IsKnownFeature(FromUtf8(name))) return false;
    camera.features[FromUtf8(name)].remove = true;
  }
  return true;
}

bool ReadCameraKey(const TConfigurationEntry& entry, TCameraConfiguration& camera, std::string& error)
{
  if (entry.key == "Remove") {
    if (ReadRemovals(entry.value, camera)) return true;
    error = entry.Where() + ": names a feature that no model has";
    return false;
  }
  for (const TKey& key : kCameraKeys) {
    if (entry.key != key.name) continue;
    if (key.read(entry.value, camera)) return true;
    error = entry.Where() + ": '" + entry.value + "' is not a valid value; " + key.form;
    return false;
  }
  error = entry.Where() + ": unknown key";
  return false;
}

bool ReadFeatureKey(const TConfigurationEntry& entry, TFeatureOverride& change, std::string& error)
{
  bool good = true;
  const bool isSwitch = entry.key == "Remove" || entry.key == "ReadOnly";
  if (entry.key == "Value")
    change.value = FromUtf8(entry.value);
  else if (entry.key == "Min")
    good = ReadNumber(entry.value, -1e18, 1e18, change.minimum.emplace());
  else if (entry.key == "Max")
    good = ReadNumber(entry.value, -1e18, 1e18, change.maximum.emplace());
  else if (entry.key == "Remove")
    good = ReadSwitch(entry.value, change.remove);
  else if (entry.key == "ReadOnly")
    good = ReadSwitch(entry.value, change.readOnly);
  else if (entry.key == "Texts") {
    std::vector<std::wstring>& texts = change.texts.emplace();
    for (const std::string& text : Split(entry.value, '|')) texts.push_back(FromUtf8(text));
  } else {
    error = entry.Where() + ": unknown key";
    return false;
  }
  if (!good)
    error = entry.Where() + ": '" + entry.value + "' is not a valid value; " +
            (isSwitch ? kSwitchForm : "a number is");
  return good;
}

/// Takes "Camera<n>" or "Camera<n>.<Feature>" apart.
bool ReadSectionName(const TConfigurationEntry& entry, size_t cameraCount, size_t& camera, std::string& feature,
                     std::string& error)
{
  const std::string kPrefix = "Camera";
  const size_t dot = entry.section.find('.');
  const std::string number = entry.section.substr(0, dot);
  if (number.rfind(kPrefix, 0) != 0 ||
      !ReadInteger(number.substr(kPrefix.size()), size_t{0}, size_t{9999}, camera)) {
    error = entry.Where() + ": unknown section";
    return false;
  }
  if (camera >= cameraCount) {
    error = entry.Where() + ": there are only " + std::to_string(cameraCount) + " cameras, numbered from 0";
    return false;
  }
  feature = dot == std::string::npos ? std::string() : entry.section.substr(dot + 1);
  if (dot != std::string::npos && !IsKnownFeature(FromUtf8(feature))) {
    error = entry.Where() + ": no model has a feature of this name";
    return false;
  }
  return true;
}

bool ReadEntry(const TConfigurationEntry& entry, TSimulatorConfiguration& configuration, std::string& error)
{
  if (entry.section == "Simulator") return true; // read before all others
  size_t camera = 0;
  std::string feature;
  if (!ReadSectionName(entry, configuration.cameras.size(), camera, feature, error)) return false;
  TCameraConfiguration& settings = configuration.cameras[camera];
  if (feature.empty()) return ReadCameraKey(entry, settings, error);
  return ReadFeatureKey(entry, settings.features[FromUtf8(feature)], error);
}

bool ReadCameraCount(const std::vector<TConfigurationEntry>& entries, TSimulatorConfiguration& configuration,
                     std::string& error)
{
  for (const TConfigurationEntry& entry : entries) {
    if (entry.section != "Simulator") continue;
    size_t count = 0;
    if (entry.key != "Cameras") {
      error = entry.Where() + ": unknown key";
      return false;
    }
    if (!ReadInteger(entry.value, size_t{0}, size_t{kMaxCameras}, count)) {
      error = entry.Where() + ": '" + entry.value + "' is not a number from 0 to " + std::to_string(kMaxCameras);
      return false;
    }
    configuration.cameras.resize(count);
  }
  return true;
}

} // namespace

TSimulatorConfiguration TSimulatorConfiguration::BuiltIn()
{
  TSimulatorConfiguration configuration;
  configuration.cameras.resize(2);
  configuration.cameras[0].model = "TRELLIS CMOS";
  configuration.cameras[1].model = "RQ512_LX";
  configuration.cameras[1].scene.kind = ESceneKind::Beads;
  configuration.cameras[1].seed = 2;
  return configuration;
}

bool TSimulatorConfiguration::Read(const std::vector<TConfigurationEntry>& entries,
                                   TSimulatorConfiguration& configuration, std::string& error)
{
  TSimulatorConfiguration result;
  result.cameras.resize(1);
  if (!ReadCameraCount(entries, result, error)) return false;
  for (const TConfigurationEntry& entry : entries) {
    if (!ReadEntry(entry, result, error)) return false;
  }
  configuration = std::move(result);
  return true;
}

} // namespace vxsim
