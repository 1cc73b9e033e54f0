// SPDX-License-Identifier: MIT
// What a spooled run's directory says of the run.
#include "spool/TSpoolDescription.h"

#include "features/current_core_handle.h"
#include "features/feature_access.h"
#include "features/feature_names.h"
#include "features/SDK3Enum.h"
#include "spool/file_writing.h"
#include "spool/host_time.h"
#include "spool/TSpoolLayout.h"
#include "utility/library_version.h"
#include "vxcore.h"

#include <cerrno>

namespace {

constexpr int kFormat = 1;
constexpr int kMaxText = 128;

namespace Section {
constexpr const char* kRun = "run";
constexpr const char* kImage = "image";
constexpr const char* kAcquisition = "acquisition";
constexpr const char* kCamera = "camera";
} // namespace Section

enum class Kind
{
  kInteger,
  kReal,
  kSwitch,
  kChoice,
  kText
};

struct TSetting
{
  const char* section;
  const char* key;
  const wchar_t* feature;
  Kind kind;
};

/// Settings of the camera that go into the description, where the camera has them.
constexpr TSetting kSettings[] = {
    {Section::kImage, "Width", Feature::kAOIWidth, Kind::kInteger},
    {Section::kImage, "Height", Feature::kAOIHeight, Kind::kInteger},
    {Section::kImage, "Stride", Feature::kAOIStride, Kind::kInteger},
    {Section::kImage, "PixelEncoding", Feature::kPixelEncoding, Kind::kChoice},
    {Section::kImage, "Metadata", Feature::kMetadataEnable, Kind::kSwitch},
    {Section::kImage, "Layout", Feature::kAOILayout, Kind::kChoice},
    {Section::kImage, "Left", Feature::kAOILeft, Kind::kInteger},
    {Section::kImage, "Top", Feature::kAOITop, Kind::kInteger},
    {Section::kImage, "HBin", Feature::kAOIHBin, Kind::kInteger},
    {Section::kImage, "VBin", Feature::kAOIVBin, Kind::kInteger},
    {Section::kImage, "Binning", Feature::kAOIBinning, Kind::kChoice},
    {Section::kAcquisition, "ExposureTime", Feature::kExposureTime, Kind::kReal},
    {Section::kAcquisition, "FrameRate", Feature::kFrameRate, Kind::kReal},
    {Section::kAcquisition, "AccumulateCount", Feature::kAccumulateCount, Kind::kInteger},
    {Section::kAcquisition, "TriggerMode", Feature::kTriggerMode, Kind::kChoice},
    {Section::kRun, "TimestampFrequency", Feature::kTimestampClockFrequency, Kind::kInteger},
    {Section::kCamera, "Model", Feature::kCameraModel, Kind::kText},
    {Section::kCamera, "SerialNumber", Feature::kSerialNumber, Kind::kText},
};

// Texts of cameras are names in plain letters; anything else is kept readable.
std::string Narrow(const std::wstring& text)
{
  std::string narrow;
  for (const wchar_t c : text) narrow += c >= L' ' && c < 127 ? static_cast<char>(c) : '?';
  return narrow;
}

void Describe(TAcquisitionMetadata& metadata, int camera, const TSetting& setting)
{
  const auto& [section, key, feature, kind] = setting;
  long long integer = 0;
  double real = 0;
  int on = 0;
  std::wstring text;
  switch (kind) {
  case Kind::kInteger:
    if (VX_GetInt(camera, feature, &integer) == VX_SUCCESS) metadata.SetInteger(section, key, integer);
    break;
  case Kind::kReal:
    if (VX_GetFloat(camera, feature, &real) == VX_SUCCESS) metadata.SetReal(section, key, real);
    break;
  case Kind::kSwitch:
    if (VX_GetBool(camera, feature, &on) == VX_SUCCESS) metadata.SetBoolean(section, key, on != 0);
    break;
  case Kind::kChoice:
    if (SDK3Enum(camera, feature).GetString(text) == VX_SUCCESS) metadata.SetText(section, key, Narrow(text));
    break;
  case Kind::kText:
    if (ReadString(camera, feature, kMaxText, text) == VX_SUCCESS) metadata.SetText(section, key, Narrow(text));
    break;
  }
}

const char* StateText(const TSpoolDescription::TOutcome& outcome)
{
  if (!outcome.failure.empty()) return "failed";
  return outcome.completed ? "complete" : "aborted";
}

} // namespace

void TSpoolDescription::Gather(int method, std::uint32_t seriesLength)
{
  method_ = method;
  seriesLength_ = seriesLength;
  for (const TSetting& setting : kSettings) Describe(metadata_, CurrentCoreHandle(), setting);
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
  failed |= metadata_.SetInteger(Section::kRun, "Format", kFormat);
  failed |= metadata_.SetText(Section::kRun, "State", "recording");
  failed |= metadata_.SetBoolean(Section::kRun, "Completed", false);
  failed |= metadata_.SetInteger(Section::kRun, "ImagesExpected", seriesLength_);
  failed |= metadata_.SetInteger(Section::kRun, "ImagesWritten", 0);
  failed |= metadata_.SetInteger(Section::kRun, "Method", method_);
  failed |= metadata_.SetText(Section::kRun, "Library", LibraryVersion::kText);
  failed |= metadata_.SetText(Section::kRun, "StartTime", UtcText(HostTimeNs()));
  errno = EINVAL; // if a key was refused
  return !failed && metadata_.SaveFile(directory_.c_str()) == 0;
}

bool TSpoolDescription::End(const TOutcome& outcome, int reserved)
{
  int failed = metadata_.SetText(Section::kRun, "State", StateText(outcome));
  failed |= metadata_.SetBoolean(Section::kRun, "Completed", outcome.completed);
  failed |= metadata_.SetInteger(Section::kRun, "ImagesWritten", static_cast<std::int64_t>(outcome.imagesWritten));
  if (!outcome.failure.empty()) failed |= metadata_.SetText(Section::kRun, "Failure", outcome.failure);
  if (outcome.firstFrameTimeNs)
    failed |= metadata_.SetText(Section::kRun, "FirstFrameTime", UtcText(*outcome.firstFrameTimeNs));
  if (outcome.firstFrameTick)
    failed |= metadata_.SetInteger(Section::kRun, "FirstFrameTick", *outcome.firstFrameTick);
  errno = EINVAL;
  return !failed && metadata_.SaveFile(directory_.c_str(), reserved) == 0;
}
