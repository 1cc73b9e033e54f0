// SPDX-License-Identifier: MIT
// The description of a recorded run: read with SimpleIni, checked key by key.
#include "runs/TRunDescription.h"

#include "runs/TInputFile.h"

#include <algorithm>
#include <charconv>
#include <climits>
#include <cmath>
#define SI_IMPLEMENTATION // the templates' bodies are wanted here
#define SI_NO_CONVERSION  // 8-bit text only, as in the file
#include <SimpleIni.h>

namespace {

using RunFormat::TKey;

constexpr std::int64_t kMaxImages = INT_MAX; // the library counts them in an int
constexpr std::int64_t kMaxImageBytes = INT_MAX;
constexpr std::int64_t kMaxSide = 1 << 20;
constexpr double kAbsoluteZeroCelsius = -273.15;
constexpr std::uint64_t kMaxDescriptionBytes = 1 << 20;

/// Takes typed values out of the document and notes those that are not valid.
class TKeyReader
{
public:
  TKeyReader(const CSimpleIniA& document, std::vector<std::string>& notes) : document_(document), notes_(notes) {}

  std::string Text(const TKey& key) const
  {
    const char* const value = document_.GetValue(key.section, key.name, "");
    std::string text = value ? value : "";
    for (char& c : text)
      if (static_cast<unsigned char>(c) < ' ') c = ' ';
    return text;
  }

  std::optional<std::int64_t> Number(const TKey& key, std::int64_t least, std::int64_t most)
  {
    const std::string text = Text(key);
    if (text.empty()) return std::nullopt;
    std::int64_t value = 0;
    if (Parse(text, value) && value >= least && value <= most) return value;
    Note(key, text);
    return std::nullopt;
  }

  std::optional<double> Real(const TKey& key, double above = 0.0)
  {
    const std::string text = Text(key);
    if (text.empty()) return std::nullopt;
    double value = 0.0;
    if (Parse(text, value) && std::isfinite(value) && value > above) return value;
    Note(key, text);
    return std::nullopt;
  }

private:
  template <typename Value>
  static bool Parse(const std::string& text, Value& value)
  {
    const char* const end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, value);
    return error == std::errc{} && rest == end;
  }
  void Note(const TKey& key, const std::string& text)
  {
    notes_.push_back(std::string("[") + key.section + "] " + key.name + " = " + text.substr(0, 60) +
                     " is not valid");
  }

  const CSimpleIniA& document_;
  std::vector<std::string>& notes_;
};

std::optional<RunFormat::State> StateOf(const std::string& text)
{
  const auto& texts = RunFormat::kStateTexts;
  const auto found = std::find(texts.begin(), texts.end(), text);
  if (found == texts.end()) return std::nullopt;
  return static_cast<RunFormat::State>(found - texts.begin());
}

// A camera that has no metadata may not say so.
std::optional<bool> SwitchOf(const std::string& text)
{
  if (text == RunFormat::kTrueText) return true;
  return text == RunFormat::kFalseText || text.empty() ? std::optional(false) : std::nullopt;
}

// "2x2", of cameras that name their binning.
void TakeBinning(const std::string& text, TRunValues& v)
{
  const char* const end = text.data() + text.size();
  std::int64_t horizontal = 0;
  std::int64_t vertical = 0;
  const auto first = std::from_chars(text.data(), end, horizontal);
  if (first.ptr == end || *first.ptr != 'x') return;
  const auto second = std::from_chars(first.ptr + 1, end, vertical);
  if (second.ptr != end || std::min(horizontal, vertical) < 1 || std::max(horizontal, vertical) > kMaxSide) return;
  v.horizontalBinning = horizontal;
  v.verticalBinning = vertical;
}

void TakeRun(TKeyReader& keys, TRunValues& v)
{
  v.imagesExpected = keys.Number(RunFormat::kImagesExpected, 1, kMaxImages);
  v.imagesWritten = keys.Number(RunFormat::kImagesWritten, 0, v.imagesExpected.value_or(kMaxImages)).value_or(0);
  v.method = keys.Number(RunFormat::kMethod, 0, kMaxImages);
  v.library = keys.Text(RunFormat::kLibrary);
  v.startTime = keys.Text(RunFormat::kStartTime);
  v.firstFrameTime = keys.Text(RunFormat::kFirstFrameTime);
  v.firstFrameTick = keys.Number(RunFormat::kFirstFrameTick, INT64_MIN, INT64_MAX);
  v.ticksPerSecond = keys.Number(RunFormat::kTimestampFrequency, 1, INT64_MAX);
  v.failure = keys.Text(RunFormat::kFailure);
}

void TakeImage(TKeyReader& keys, TRunValues& v)
{
  v.width = keys.Number(RunFormat::kWidth, 1, kMaxSide);
  v.height = keys.Number(RunFormat::kHeight, 1, kMaxSide);
  v.stride = keys.Number(RunFormat::kStride, 1, kMaxImageBytes);
  v.encoding = keys.Text(RunFormat::kPixelEncoding);
  v.layout = keys.Text(RunFormat::kLayout);
  v.left = keys.Number(RunFormat::kLeft, 1, kMaxSide);
  v.top = keys.Number(RunFormat::kTop, 1, kMaxSide);
  v.horizontalBinning = keys.Number(RunFormat::kHBin, 1, kMaxSide);
  v.verticalBinning = keys.Number(RunFormat::kVBin, 1, kMaxSide);
  if (!v.horizontalBinning && !v.verticalBinning) TakeBinning(keys.Text(RunFormat::kBinning), v);
}

void TakeAcquisition(TKeyReader& keys, TRunValues& v)
{
  v.exposureSeconds = keys.Real(RunFormat::kExposureTime);
  v.frameRate = keys.Real(RunFormat::kFrameRate);
  v.accumulations = keys.Number(RunFormat::kAccumulateCount, 1, kMaxImages);
  v.trigger = keys.Text(RunFormat::kTriggerMode);
  v.readoutSeconds = keys.Real(RunFormat::kReadoutTime);
  v.readoutRate = keys.Text(RunFormat::kPixelReadoutRate);
  v.gain = keys.Text(RunFormat::kPreAmpGain);
  v.isCoolerOn = SwitchOf(keys.Text(RunFormat::kSensorCooling)).value_or(false);
  v.sensorCelsius = keys.Real(RunFormat::kSensorTemperature, kAbsoluteZeroCelsius);
  v.targetCelsius = keys.Real(RunFormat::kTargetTemperature, kAbsoluteZeroCelsius);
  v.model = keys.Text(RunFormat::kModel);
  v.serial = keys.Text(RunFormat::kSerialNumber);
  v.pixelWidthMicrometres = keys.Real(RunFormat::kPixelWidth);
  v.pixelHeightMicrometres = keys.Real(RunFormat::kPixelHeight);
}

} // namespace

bool TRunDescription::Fail(const std::string& message)
{
  error_ = message;
  return false;
}

bool TRunDescription::Read(const std::string& directory)
{
  directory_ = directory;
  const std::string path = directory + "/" + RunFormat::kDescriptionName;
  std::string text;
  if (!ReadText(path, text)) return false;
  CSimpleIniA document(true, false, false); // UTF-8, the last of repeated keys, one line a value
  if (document.LoadData(text) < 0) return Fail(path + ": cannot be understood");

  TKeyReader keys(document, notes_);
  const auto format = keys.Number(RunFormat::kFormat, 1, kMaxImages);
  if (format.value_or(RunFormat::kVersion) > RunFormat::kVersion)
    return Fail(path + ": layout " + std::to_string(*format) + " is newer than this program");
  const auto imagesPerFile = keys.Number(RunFormat::kImagesPerFile, 1, kMaxImages);
  const auto imageBytes = keys.Number(RunFormat::kImageSize, 1, kMaxImageBytes);
  if (!imagesPerFile || !imageBytes)
    return Fail(path + ": has no valid " + (imagesPerFile ? "ImageSize" : "ImagesPerFile"));
  values_.imagesPerFile = *imagesPerFile;
  values_.imageBytes = *imageBytes;
  const std::optional<RunFormat::State> state = StateOf(keys.Text(RunFormat::kState));
  const std::optional<bool> hasMetadata = SwitchOf(keys.Text(RunFormat::kMetadata));
  if (!state || !hasMetadata) return Fail(path + ": has no valid " + (state ? "Metadata" : "State"));
  values_.state = *state;
  values_.hasMetadata = *hasMetadata;
  TakeRun(keys, values_);
  TakeImage(keys, values_);
  TakeAcquisition(keys, values_);
  FindLayout();
  return true;
}

bool TRunDescription::ReadText(const std::string& path, std::string& text)
{
  TInputFile file;
  if (!file.Open(path)) {
    isMissing_ = file.IsMissing();
    return Fail(file.Error() + (isMissing_ ? ": not the directory of a run" : ""));
  }
  if (file.Length() > kMaxDescriptionBytes) return Fail(path + ": is too long to be the description of a run");
  text.resize(file.Length());
  return file.ReadAt(0, std::as_writable_bytes(std::span(text))) || Fail(file.Error());
}

void TRunDescription::FindLayout()
{
  const TRunValues& v = values_;
  const std::optional<RunFormat::Encoding> encoding = EncodingOf(v.encoding);
  if (!v.width || !v.height || !v.stride)
    layoutProblem_ = "the description does not say width, height and stride of the images";
  else if (!encoding)
    layoutProblem_ = v.encoding.empty() ? "the description does not say the encoding of the pixels"
                                        : "the pixels are encoded as " + v.encoding + ", which is not known here";
  else if (RowBytes(*encoding, static_cast<int>(*v.width)) > *v.stride || *v.stride * *v.height > v.imageBytes)
    layoutProblem_ =
        "images of this width, height and stride do not fit into " + std::to_string(v.imageBytes) + " bytes";
  else
    layout_ = TFrameLayout{*encoding, static_cast<int>(*v.width), static_cast<int>(*v.height), *v.stride};
}

std::int64_t TRunDescription::ImageLimit() const
{
  return values_.imagesExpected.value_or(kMaxImages);
}
