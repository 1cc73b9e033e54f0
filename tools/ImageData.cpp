// SPDX-License-Identifier: MIT
// Words, numbers and facts of images as files have them.
#include "tools/ImageData.h"

#include "runs/host_time.h"
#include "runs/TRunDescription.h"
#include "tools/Options.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <climits>
#include <cstdio>

namespace vxtool {

namespace {

constexpr std::size_t kUtcLength = 19; // up to the seconds

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

TSensorArea AreaOf(const TRunValues& values)
{
  TSensorArea area; // of width 0: not known
  if (!values.layout.empty() && values.layout != "Image") return area;
  if (!values.left || !values.top || !values.horizontalBinning || !values.verticalBinning) return area;
  if (!values.width || !values.height) return area;
  area.left = static_cast<int>(*values.left);
  area.top = static_cast<int>(*values.top);
  area.width = static_cast<int>(std::min<std::int64_t>(*values.width * *values.horizontalBinning, INT_MAX));
  area.height = static_cast<int>(std::min<std::int64_t>(*values.height * *values.verticalBinning, INT_MAX));
  area.horizontalBinning = static_cast<int>(*values.horizontalBinning);
  area.verticalBinning = static_cast<int>(*values.verticalBinning);
  return area;
}

// The number before a unit, of "200 MHz" for example.
std::optional<double> NumberBefore(const std::string& unit, const std::string& text)
{
  double number = 0.0;
  const auto [rest, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc{} || std::string(rest) != unit || number <= 0.0) return std::nullopt;
  return number;
}

// Names of gains may have the bits of a pixel behind them: "Gain 2 (11-bit)".
TReadout ReadoutOf(const TRunValues& values)
{
  TReadout readout;
  readout.gain = PrintableAscii(values.gain.substr(0, values.gain.find(" (")));
  readout.gainFactor = NumberBefore("x", readout.gain);
  if (!readout.gainFactor) readout.gainFactor = NumberBefore("", readout.gain);
  readout.megahertz = NumberBefore(" MHz", values.readoutRate);
  return readout;
}

} // namespace

const char* ImageCheckText(ImageCheck check)
{
  if (check == ImageCheck::Unchecked) return "unchecked";
  return check == ImageCheck::Right ? "right" : "wrong";
}

std::string TracksText(const std::vector<TTrack>& tracks)
{
  std::string text;
  for (const TTrack& track : tracks)
    text += (text.empty() ? "" : ",") + std::to_string(track.first) + "-" + std::to_string(track.last);
  return text;
}

std::optional<double> TRunFacts::ImagePixelWidth() const
{
  if (!pixelWidthMicrometres || area.width < 1) return std::nullopt;
  return *pixelWidthMicrometres * area.horizontalBinning;
}

std::optional<double> TRunFacts::ImagePixelHeight() const
{
  if (!pixelHeightMicrometres || area.width < 1 || !area.tracks.empty()) return std::nullopt;
  return *pixelHeightMicrometres * area.verticalBinning;
}

TRunFacts FactsOf(const TRunDescription& run)
{
  const TRunValues& values = run.Values();
  TRunFacts facts;
  facts.software = std::string("vxmcd tool ") + VXTOOL_VERSION;
  facts.camera = PrintableAscii(values.model);
  facts.serial = FirstNumberIn(values.serial);
  facts.startUtc = PlainUtc(values.startTime);
  facts.trigger = PrintableAscii(TriggerWord(values.trigger));
  if (facts.trigger != TriggerName(Trigger::ExternalExposure))
    facts.exposureSeconds = values.exposureSeconds.value_or(0.0);
  facts.accumulations = static_cast<int>(values.accumulations.value_or(1));
  if (facts.trigger == TriggerName(Trigger::Internal) && values.frameRate)
    facts.cycleSeconds = facts.accumulations / *values.frameRate;
  facts.area = AreaOf(values);
  facts.readout = ReadoutOf(values);
  facts.pixelWidthMicrometres = values.pixelWidthMicrometres;
  facts.pixelHeightMicrometres = values.pixelHeightMicrometres;
  facts.sensorCelsius = values.sensorCelsius;
  if (values.isCoolerOn) facts.targetCelsius = values.targetCelsius;
  facts.readoutSeconds = values.readoutSeconds;
  facts.ticksPerSecond = values.ticksPerSecond;
  if (const std::optional<std::int64_t> time = HostTimeOf(values.firstFrameTime))
    facts.firstArrival = {*time, values.firstFrameTick};
  return facts;
}

std::string CameraText(const TRunFacts& facts)
{
  return facts.camera + (facts.serial ? " " + std::to_string(*facts.serial) : "");
}

std::string AreaText(const TSensorArea& area)
{
  char text[120];
  std::snprintf(text, sizeof text, "%d,%d,%dx%d, binning %dx%d", area.left, area.top, area.width, area.height,
                area.horizontalBinning, area.verticalBinning);
  return text;
}

std::string PrintableAscii(std::string text)
{
  for (char& c : text)
    if (c < ' ' || c > '~') c = '?';
  return text;
}

} // namespace vxtool
