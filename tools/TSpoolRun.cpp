// SPDX-License-Identifier: MIT
// The description of a spooled run: read with SimpleIni, checked key by key.
#include "tools/TSpoolRun.h"

#include "tools/ArgumentForms.h"
#include "tools/Options.h"
#include "tools/TInputFile.h"
#include "tools/ToolText.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <climits>
#include <cmath>
#include <cstdio>
#define SI_IMPLEMENTATION // the templates' bodies are wanted here
#define SI_NO_CONVERSION  // 8-bit text only, as it lies in the file
#include <SimpleIni.h>

namespace vxtool {

namespace {

constexpr std::int64_t kFormat = 1;
constexpr std::int64_t kMaxImages = INT_MAX; // the library counts them in an int
constexpr std::int64_t kMaxImageBytes = INT_MAX;
constexpr std::int64_t kMaxSide = 1 << 20;
constexpr std::uint64_t kMaxDescriptionBytes = 1 << 20;
constexpr int kFileDigits = 10;
constexpr const char* kFilePrefix = "spool_";
constexpr const char* kFileSuffix = ".dat";
constexpr std::size_t kUtcLength = 19; // up to the seconds

/// Takes typed values out of the document and notes those that make no sense.
class TSpoolKeys
{
public:
  TSpoolKeys(const CSimpleIniA& document, std::vector<std::string>& notes) : document_(document), notes_(notes) {}

  std::string Text(const char* section, const char* key) const
  {
    const char* const value = document_.GetValue(section, key, "");
    std::string text = value ? value : "";
    for (char& c : text)
      if (static_cast<unsigned char>(c) < ' ') c = ' ';
    return text;
  }

  std::optional<std::int64_t> Number(const char* section, const char* key, std::int64_t least, std::int64_t most)
  {
    const std::string text = Text(section, key);
    if (text.empty()) return std::nullopt;
    std::int64_t value = 0;
    if (Parse(text, value) && value >= least && value <= most) return value;
    Note(section, key, text);
    return std::nullopt;
  }

  std::optional<double> Real(const char* section, const char* key)
  {
    const std::string text = Text(section, key);
    if (text.empty()) return std::nullopt;
    double value = 0.0;
    if (Parse(text, value) && std::isfinite(value) && value > 0.0) return value;
    Note(section, key, text);
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
  void Note(const char* section, const char* key, const std::string& text)
  {
    notes_.push_back(std::string("[") + section + "] " + key + " = " + text.substr(0, 60) + " makes no sense");
  }

  const CSimpleIniA& document_;
  std::vector<std::string>& notes_;
};

std::optional<SpoolState> StateOf(const std::string& text)
{
  if (text == "recording") return SpoolState::Recording;
  if (text == "complete") return SpoolState::Complete;
  if (text == "aborted") return SpoolState::Aborted;
  if (text == "failed") return SpoolState::Failed;
  return std::nullopt;
}

// A camera that has no metadata may not say so.
std::optional<bool> SwitchOf(const std::string& text)
{
  if (text == "true") return true;
  return text == "false" || text.empty() ? std::optional(false) : std::nullopt;
}

// "External Start" becomes "external-start", the word of the command line.
std::string TriggerWord(std::string text)
{
  for (char& c : text) c = c == ' ' ? '-' : static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return text;
}

std::optional<int> FirstNumberIn(const std::string& text)
{
  const std::size_t digit = text.find_first_of("0123456789");
  if (digit == std::string::npos) return std::nullopt;
  int number = 0;
  const auto [rest, error] = std::from_chars(text.data() + digit, text.data() + text.size(), number);
  return error == std::errc{} ? std::optional<int>(number) : std::nullopt;
}

// "2026-01-31T12:34:56.789012345Z" without the Z, which the files say in another way; "" for anything else.
std::string PlainUtc(const std::string& text)
{
  const std::string pattern = "dddd-dd-ddTdd:dd:dd";
  if (text.size() <= kUtcLength || text.back() != 'Z') return "";
  for (std::size_t index = 0; index + 1 < text.size(); ++index) {
    const bool isDigit = std::isdigit(static_cast<unsigned char>(text[index])) != 0;
    const char wanted = index < kUtcLength ? pattern[index] : index == kUtcLength ? '.' : 'd';
    if (wanted == 'd' ? !isDigit : text[index] != wanted) return "";
  }
  return text.substr(0, text.size() - 1);
}

// "2x2", of cameras that name their binning.
void TakeBinning(const std::string& text, TSpoolFacts& facts)
{
  TImageAreaOptions area;
  if (!ParseBinning(text, area)) return;
  facts.horizontalBinning = area.horizontalBinning;
  facts.verticalBinning = area.verticalBinning;
}

void TakeRun(TSpoolKeys& keys, TSpoolFacts& f)
{
  f.stateText = keys.Text("run", "State");
  f.state = StateOf(f.stateText).value_or(SpoolState::Recording);
  f.imagesExpected = keys.Number("run", "ImagesExpected", 1, kMaxImages);
  f.imagesWritten = keys.Number("run", "ImagesWritten", 0, f.imagesExpected.value_or(kMaxImages)).value_or(0);
  f.method = keys.Number("run", "Method", 0, kMaxImages);
  f.library = keys.Text("run", "Library");
  f.startTime = keys.Text("run", "StartTime");
  f.firstFrameTime = keys.Text("run", "FirstFrameTime");
  f.firstFrameTick = keys.Number("run", "FirstFrameTick", INT64_MIN, INT64_MAX);
  f.ticksPerSecond = keys.Number("run", "TimestampFrequency", 1, INT64_MAX);
  f.failure = keys.Text("run", "Failure");
}

void TakeImage(TSpoolKeys& keys, TSpoolFacts& f)
{
  f.width = keys.Number("image", "Width", 1, kMaxSide);
  f.height = keys.Number("image", "Height", 1, kMaxSide);
  f.stride = keys.Number("image", "Stride", 1, kMaxImageBytes);
  f.encoding = keys.Text("image", "PixelEncoding");
  f.hasMetadata = SwitchOf(keys.Text("image", "Metadata")).value_or(false);
  f.layout = keys.Text("image", "Layout");
  f.left = keys.Number("image", "Left", 1, kMaxSide);
  f.top = keys.Number("image", "Top", 1, kMaxSide);
  f.horizontalBinning = keys.Number("image", "HBin", 1, kMaxSide);
  f.verticalBinning = keys.Number("image", "VBin", 1, kMaxSide);
  if (!f.horizontalBinning && !f.verticalBinning) TakeBinning(keys.Text("image", "Binning"), f);
}

void TakeAcquisition(TSpoolKeys& keys, TSpoolFacts& f)
{
  f.exposureSeconds = keys.Real("acquisition", "ExposureTime");
  f.frameRate = keys.Real("acquisition", "FrameRate");
  f.accumulations = keys.Number("acquisition", "AccumulateCount", 1, kMaxImages);
  f.trigger = keys.Text("acquisition", "TriggerMode");
  f.model = keys.Text("camera", "Model");
  f.serial = keys.Text("camera", "SerialNumber");
}

TSensorArea AreaOf(const TSpoolFacts& facts)
{
  TSensorArea area; // of width 0: not known
  if (!facts.layout.empty() && facts.layout != "Image") return area;
  if (!facts.left || !facts.top || !facts.horizontalBinning || !facts.verticalBinning) return area;
  if (!facts.width || !facts.height) return area;
  area.left = static_cast<int>(*facts.left);
  area.top = static_cast<int>(*facts.top);
  area.width = static_cast<int>(std::min<std::int64_t>(*facts.width * *facts.horizontalBinning, INT_MAX));
  area.height = static_cast<int>(std::min<std::int64_t>(*facts.height * *facts.verticalBinning, INT_MAX));
  area.horizontalBinning = static_cast<int>(*facts.horizontalBinning);
  area.verticalBinning = static_cast<int>(*facts.verticalBinning);
  return area;
}

} // namespace

std::string SpoolFileName(std::int64_t file)
{
  char text[64];
  std::snprintf(text, sizeof text, "%s%0*lld%s", kFilePrefix, kFileDigits, static_cast<long long>(file),
                kFileSuffix);
  return text;
}

std::optional<std::int64_t> SpoolFileNumber(const std::string& name)
{
  std::int64_t number = 0;
  const std::size_t prefix = std::string(kFilePrefix).size();
  if (name.size() < prefix + kFileDigits || name.compare(0, prefix, kFilePrefix) != 0) return std::nullopt;
  const char* const digits = name.data() + prefix;
  const auto [rest, error] = std::from_chars(digits, digits + kFileDigits, number);
  if (error != std::errc{} || rest != digits + kFileDigits || number < 0) return std::nullopt;
  return name == SpoolFileName(number) ? std::optional(number) : std::nullopt;
}

bool TSpoolRun::Fail(const std::string& message)
{
  error_ = message;
  return false;
}

bool TSpoolRun::Read(const std::string& directory)
{
  directory_ = directory;
  const std::string path = directory + "/" + kSpoolDescriptionName;
  std::string text;
  if (!ReadText(path, text)) return false;
  CSimpleIniA document(true, false, false); // UTF-8, the last of repeated keys, one line a value
  if (document.LoadData(text) < 0) return Fail(path + ": cannot be understood");

  TSpoolKeys keys(document, notes_);
  const auto format = keys.Number("run", "Format", 1, kMaxImages);
  if (format.value_or(kFormat) > kFormat)
    return Fail(path + ": layout " + std::to_string(*format) + " is newer than this program");
  const auto imagesPerFile = keys.Number("multiimage", "ImagesPerFile", 1, kMaxImages);
  const auto imageBytes = keys.Number("data", "ImageSize", 1, kMaxImageBytes);
  if (!imagesPerFile || !imageBytes)
    return Fail(path + ": says nothing sensible about " + (imagesPerFile ? "ImageSize" : "ImagesPerFile"));
  facts_.imagesPerFile = *imagesPerFile;
  facts_.imageBytes = *imageBytes;
  TakeRun(keys, facts_);
  TakeImage(keys, facts_);
  TakeAcquisition(keys, facts_);
  const bool isStateKnown = StateOf(facts_.stateText).has_value();
  if (!isStateKnown || !SwitchOf(keys.Text("image", "Metadata")))
    return Fail(path + ": says nothing sensible about " + (isStateKnown ? "Metadata" : "State"));
  FindLayout();
  return true;
}

bool TSpoolRun::ReadText(const std::string& path, std::string& text)
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

void TSpoolRun::FindLayout()
{
  const TSpoolFacts& f = facts_;
  const std::optional<FrameEncoding> encoding = FrameEncodingOf(f.encoding);
  if (!f.width || !f.height || !f.stride)
    layoutProblem_ = "the description does not say width, height and stride of the images";
  else if (!encoding)
    layoutProblem_ = f.encoding.empty() ? "the description does not say the encoding of the pixels"
                                        : "the pixels are encoded as " + f.encoding + ", which is not known here";
  else if (FrameRowBytes(*encoding, static_cast<int>(*f.width)) > *f.stride ||
           *f.stride * *f.height > f.imageBytes)
    layoutProblem_ =
        "images of this width, height and stride do not fit into " + std::to_string(f.imageBytes) + " bytes";
  else
    layout_ = TFrameLayout{*encoding, static_cast<int>(*f.width), static_cast<int>(*f.height), *f.stride};
}

std::int64_t TSpoolRun::ImageLimit() const
{
  return facts_.imagesExpected.value_or(kMaxImages);
}

TRunFacts TSpoolRun::RunFacts() const
{
  TRunFacts facts;
  facts.software = std::string("vxmcd tool ") + VXTOOL_VERSION;
  facts.camera = PrintableAscii(facts_.model);
  facts.serial = FirstNumberIn(facts_.serial);
  facts.startUtc = PlainUtc(facts_.startTime);
  facts.trigger = PrintableAscii(TriggerWord(facts_.trigger));
  facts.exposureSeconds = facts_.exposureSeconds.value_or(0.0);
  facts.accumulations = static_cast<int>(facts_.accumulations.value_or(1));
  if (facts.trigger == TriggerName(Trigger::Internal) && facts_.frameRate)
    facts.cycleSeconds = facts.accumulations / *facts_.frameRate;
  facts.area = AreaOf(facts_);
  return facts;
}

} // namespace vxtool
