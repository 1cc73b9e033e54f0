// SPDX-License-Identifier: MIT
// Describes a spooled run in its directory.
#include "spool/TSpoolDescription.h"

#include "features/feature_access.h"
#include "features/feature_names.h"
#include "features/SDK3Features.h"
#include "runs/host_time.h"
#include "runs/run_format.h"
#include "spool/TSpoolLayout.h"
#include "utility/file_access.h"
#include "utility/library_version.h"

#include <cerrno>

namespace {

constexpr int kMaxText = 128;

struct TSetting
{
  RunFormat::TKey key;
  const wchar_t* feature;
};

/// Settings of the camera that go into the description, where the camera has them.
constexpr TSetting kSettings[] = {
    {RunFormat::kWidth, Feature::kAOIWidth},
    {RunFormat::kHeight, Feature::kAOIHeight},
    {RunFormat::kStride, Feature::kAOIStride},
    {RunFormat::kPixelEncoding, Feature::kPixelEncoding},
    {RunFormat::kMetadata, Feature::kMetadataEnable},
    {RunFormat::kLayout, Feature::kAOILayout},
    {RunFormat::kLeft, Feature::kAOILeft},
    {RunFormat::kTop, Feature::kAOITop},
    {RunFormat::kHBin, Feature::kAOIHBin},
    {RunFormat::kVBin, Feature::kAOIVBin},
    {RunFormat::kBinning, Feature::kAOIBinning},
    {RunFormat::kExposureTime, Feature::kExposureTime},
    {RunFormat::kFrameRate, Feature::kFrameRate},
    {RunFormat::kAccumulateCount, Feature::kAccumulateCount},
    {RunFormat::kTriggerMode, Feature::kTriggerMode},
    {RunFormat::kReadoutTime, Feature::kReadoutTime},
    {RunFormat::kPixelReadoutRate, Feature::kPixelReadoutRate},
    {RunFormat::kPreAmpGain, Feature::kPreAmpGain},
    {RunFormat::kPreAmpGain, Feature::kSimplePreAmpGainControl}, // a camera has one or the other
    {RunFormat::kSensorCooling, Feature::kSensorCooling},
    {RunFormat::kSensorTemperature, Feature::kSensorTemperature},
    {RunFormat::kTargetTemperature, Feature::kTargetSensorTemperature},
    {RunFormat::kTimestampFrequency, Feature::kTimestampClockFrequency},
    {RunFormat::kModel, Feature::kCameraModel},
    {RunFormat::kSerialNumber, Feature::kSerialNumber},
    {RunFormat::kPixelWidth, Feature::kPixelWidth},
    {RunFormat::kPixelHeight, Feature::kPixelHeight},
};

// Texts of cameras are names in plain letters; anything else is kept readable.
std::string Narrow(const std::wstring& text)
{
  std::string narrow;
  for (const wchar_t c : text) narrow += c >= L' ' && c < 127 ? static_cast<char>(c) : '?';
  return narrow;
}

int Set(TAcquisitionMetadata& metadata, const RunFormat::TKey& key, const std::string& value)
{
  return metadata.SetText(key.section, key.name, value);
}

int Set(TAcquisitionMetadata& metadata, const RunFormat::TKey& key, std::int64_t value)
{
  return metadata.SetInteger(key.section, key.name, value);
}

int Set(TAcquisitionMetadata& metadata, const RunFormat::TKey& key, bool value)
{
  return metadata.SetBoolean(key.section, key.name, value);
}

void Describe(TAcquisitionMetadata& metadata, int camera, const TSetting& setting)
{
  using RunFormat::Kind;
  const auto& [key, feature] = setting;
  long long integer = 0;
  double real = 0;
  int on = 0;
  std::wstring text;
  switch (key.kind) {
  case Kind::kInteger:
    if (ReadInt(camera, feature, integer) == VX_SUCCESS) Set(metadata, key, std::int64_t{integer});
    break;
  case Kind::kReal:
    if (ReadFloat(camera, feature, real) == VX_SUCCESS) metadata.SetReal(key.section, key.name, real);
    break;
  case Kind::kSwitch:
    if (ReadBool(camera, feature, on) == VX_SUCCESS) Set(metadata, key, on != 0);
    break;
  case Kind::kWord:
    if (SDK3Enum(camera, feature).GetString(text) == VX_SUCCESS) Set(metadata, key, Narrow(text));
    break;
  case Kind::kText:
    if (ReadString(camera, feature, kMaxText, text) == VX_SUCCESS) Set(metadata, key, Narrow(text));
    break;
  }
}

RunFormat::State StateOf(const TSpoolDescription::TOutcome& outcome)
{
  if (!outcome.failure.empty()) return RunFormat::State::kFailed;
  return outcome.completed ? RunFormat::State::kComplete : RunFormat::State::kAborted;
}

} // namespace

void TSpoolDescription::Gather(int coreHandle, int method, std::uint32_t seriesLength)
{
  method_ = method;
  seriesLength_ = seriesLength;
  for (const TSetting& setting : kSettings) Describe(metadata_, coreHandle, setting);
}

bool TSpoolDescription::Begin(const std::string& directory, const TSpoolLayout& layout)
{
  directory_ = directory;
  if (const int error = CheckFileSizeLimit(kMaxBytes)) {
    errno = error;
    return false;
  }
  int failed = metadata_.SetImagesPerFile(layout.ImagesPerFile());
  failed |= metadata_.SetImageSizeBytes(static_cast<unsigned int>(layout.imageSizeBytes));
  failed |= Set(metadata_, RunFormat::kFormat, std::int64_t{RunFormat::kVersion});
  failed |= Set(metadata_, RunFormat::kState, RunFormat::StateText(RunFormat::State::kRecording));
  failed |= Set(metadata_, RunFormat::kCompleted, false);
  failed |= Set(metadata_, RunFormat::kImagesExpected, std::int64_t{seriesLength_});
  failed |= Set(metadata_, RunFormat::kImagesWritten, std::int64_t{0});
  failed |= Set(metadata_, RunFormat::kMethod, std::int64_t{method_});
  failed |= Set(metadata_, RunFormat::kLibrary, std::string(LibraryVersion::kText));
  failed |= Set(metadata_, RunFormat::kStartTime, UtcText(HostTimeNs()));
  errno = EINVAL; // if a key was refused
  return !failed && metadata_.SaveFile(directory_.c_str()) == 0;
}

bool TSpoolDescription::End(const TOutcome& outcome, int reserved)
{
  int failed = Set(metadata_, RunFormat::kState, RunFormat::StateText(StateOf(outcome)));
  failed |= Set(metadata_, RunFormat::kCompleted, outcome.completed);
  failed |= Set(metadata_, RunFormat::kImagesWritten, static_cast<std::int64_t>(outcome.imagesWritten));
  if (!outcome.failure.empty()) failed |= Set(metadata_, RunFormat::kFailure, outcome.failure);
  if (outcome.firstFrameTimeNs)
    failed |= Set(metadata_, RunFormat::kFirstFrameTime, UtcText(*outcome.firstFrameTimeNs));
  if (outcome.firstFrameTick) failed |= Set(metadata_, RunFormat::kFirstFrameTick, *outcome.firstFrameTick);
  errno = EINVAL;
  return !failed && metadata_.SaveFile(directory_.c_str(), reserved) == 0;
}
