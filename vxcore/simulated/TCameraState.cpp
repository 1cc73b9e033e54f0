// SPDX-License-Identifier: MIT
// The present settings of a simulated camera, and what follows from them.
#include "vxcore/simulated/TCameraState.h"

#include "vxcore/simulated/imaging/TMetadataWriter.h"

#include <algorithm>
#include <cmath>
#include <cwchar>

namespace vxsim {

namespace {

constexpr long long kMetadataAlignment = 8;
constexpr double kDefaultMegahertz = 100.0;
constexpr double kReadNoiseExponent = 0.25; ///< how read noise grows with the pixel rate

// What the FIFO registers count in a memory of 1 GB; larger and smaller memories count to four times as much.
constexpr long long kFifoRolling = 128928256;
constexpr long long kFifoGlobal11Bit = 64464128;
constexpr long long kFifoGlobal = 43674624;

/// A gain text such as "10x" or "4.0" as a factor.
double GainFactor(std::wstring_view text)
{
  const size_t digit = text.find_first_of(L"0123456789");
  if (digit == std::wstring_view::npos) return 1.0;
  const double factor = std::wcstod(std::wstring(text.substr(digit)).c_str(), nullptr);
  return factor > 0.0 ? factor : 1.0;
}

} // namespace

TCameraState::TCameraState(const TCameraModel& cameraModel, const TCameraConfiguration& cameraConfiguration)
    : model(cameraModel),
      configuration(cameraConfiguration),
      sensorWidth(cameraModel.sensorWidth),
      sensorHeight(cameraModel.sensorHeight),
      height(cameraModel.sensorHeight),
      thermal(cameraModel.thermal, cameraConfiguration.ambientCelsius, cameraConfiguration.timeScale)
{
  imageColumns.width = trackColumns.width = sensorWidth;
  for (const TModelChoice& choice : model.choices) {
    TChoice& mine = Choice(choice.choice);
    mine.SetTexts(choice.choice, {choice.texts.begin(), choice.texts.end()});
    mine.Choose(choice.initial);
  }
}

const TModelGain& TCameraState::Gain() const
{
  const std::wstring_view channel = Choice(EChoice::PreAmpGainChannel).Text();
  for (const TModelGain& gain : model.gains) {
    if (channel == gain.channel) return gain;
  }
  return model.gains.front();
}

double TCameraState::GainElectronsPerCount() const
{
  if (configuration.gainElectronsPerCount) return *configuration.gainElectronsPerCount;
  const TChoice& gains = Choice(EChoice::PreAmpGain);
  const auto kept = preAmpGains_.find(Choice(EChoice::PreAmpGainChannel).Text());
  const bool hasOwn = kept != preAmpGains_.end() && gains.Has(kept->second);
  const std::wstring_view text = hasOwn ? gains.TextAt(kept->second) : gains.Text();
  return Gain().electronsPerCount / GainFactor(text);
}

double TCameraState::ReadNoiseElectrons() const
{
  if (configuration.readNoiseElectrons) return *configuration.readNoiseElectrons;
  const bool global = Shutter() == EShutter::Global;
  const double speed = PixelRateHertz() / (model.readNoiseMegahertz * 1e6);
  return Gain().readNoiseElectrons * std::pow(speed, kReadNoiseExponent) *
         (global ? model.globalReadNoiseFactor : 1.0);
}

double TCameraState::PixelRateHertz() const
{
  const double megahertz = std::wcstod(std::wstring(Choice(EChoice::PixelReadoutRate).Text()).c_str(), nullptr);
  return (megahertz > 0.0 ? megahertz : kDefaultMegahertz) * 1e6;
}

bool TCameraState::HasPreAmpGain(std::wstring_view channel, std::wstring_view text) const
{
  bool isOthers = false;
  for (const TModelGain& gain : model.gains) {
    const bool has = std::ranges::any_of(gain.preAmpGains, [text](const wchar_t* own) { return text == own; });
    if (has && channel == gain.channel) return true;
    isOthers = isOthers || has;
  }
  return !isOthers; // a made-up text belongs to every channel
}

void TCameraState::ResetPreAmpGains()
{
  const TChoice& gains = Choice(EChoice::PreAmpGain);
  for (const TModelGain& gain : model.gains) {
    const auto own = std::ranges::find_if(
        gains.Texts(), [&](const std::wstring& text) { return HasPreAmpGain(gain.channel, text); });
    if (own != gains.Texts().end()) preAmpGains_[gain.channel] = static_cast<int>(own - gains.Texts().begin());
  }
}

void TCameraState::StorePreAmpGain()
{
  preAmpGains_[std::wstring(Choice(EChoice::PreAmpGainSelector).Text())] = Choice(EChoice::PreAmpGain).Index();
}

void TCameraState::ShowPreAmpGain()
{
  const auto kept = preAmpGains_.find(Choice(EChoice::PreAmpGainSelector).Text());
  if (kept != preAmpGains_.end()) Choice(EChoice::PreAmpGain).Choose(kept->second);
}

void TCameraState::FitArea()
{
  for (TColumns* columns : {&imageColumns, &trackColumns}) {
    columns->width = std::clamp(columns->width, 1LL, std::max(1LL, sensorWidth / columns->bin));
    columns->left = std::clamp(columns->left, 1LL, std::max(1LL, sensorWidth - columns->width * columns->bin + 1));
  }
  height = std::clamp(height, 1LL, std::max(1LL, sensorHeight / verticalBin));
  top = std::clamp(top, 1LL, std::max(1LL, sensorHeight - height * verticalBin + 1));
}

long long TCameraState::OutputRows() const
{
  return IsTracks() ? static_cast<long long>(tracks.size()) : height;
}

long long TCameraState::StrideBytes() const
{
  const int padding = configuration.stridePadding < 0 ? model.stridePadding : configuration.stridePadding;
  return static_cast<long long>(RowBytes(Encoding(), static_cast<int>(Columns().width))) + padding;
}

long long TCameraState::PixelBytes() const
{
  const long long bytes = StrideBytes() * OutputRows();
  return (bytes + kMetadataAlignment - 1) / kMetadataAlignment * kMetadataAlignment;
}

long long TCameraState::ImageSizeBytes() const
{
  return PixelBytes() + (metadata ? static_cast<long long>(TMetadataWriter::TailBytes()) : 0);
}

long long TCameraState::FifoCapacity() const
{
  const long long banks = model.memoryType == std::wstring_view(L"1GB") ? 1 : 4;
  if (Shutter() == EShutter::Rolling) return banks * kFifoRolling;
  const auto bits = Choice(EChoice::SimplePreAmpGainControl).Meaning<EFifoBits>();
  return banks * (bits == EFifoBits::Eleven ? kFifoGlobal11Bit : kFifoGlobal);
}

TFrameSettings TCameraState::FrameSettings() const
{
  TFrameSettings settings;
  settings.sensor.widthPixels = static_cast<int>(sensorWidth);
  settings.sensor.heightPixels = static_cast<int>(sensorHeight);
  settings.sensor.fullWellElectrons = configuration.fullWellElectrons.value_or(model.fullWellElectrons);
  settings.sensor.quantumEfficiency = model.quantumEfficiency;
  settings.sensor.darkElectronsPerSecond =
      configuration.darkElectronsPerSecond.value_or(model.darkElectronsPerSecond);
  settings.sensor.darkDoublingCelsius = configuration.darkDoublingCelsius.value_or(model.darkDoublingCelsius);
  settings.sensor.seed = configuration.seed;

  settings.readout.gainElectronsPerCount = GainElectronsPerCount();
  settings.readout.readNoiseElectrons = ReadNoiseElectrons();
  settings.readout.bitDepth = Gain().bitDepth;
  settings.readout.baselineClamp = baselineClamp;
  settings.readout.baselineCounts = static_cast<double>(baselineCounts);

  settings.geometry.leftPixels = static_cast<int>(Columns().left - 1);
  settings.geometry.topPixels = static_cast<int>(top - 1);
  settings.geometry.widthPixels = static_cast<int>(Columns().width);
  settings.geometry.heightPixels = static_cast<int>(OutputRows());
  settings.geometry.horizontalBin = static_cast<int>(Columns().bin);
  settings.geometry.verticalBin = static_cast<int>(verticalBin);
  if (IsTracks()) {
    for (const TTrackArea& track : tracks) {
      settings.geometry.tracks.push_back({static_cast<int>(track.top - 1), static_cast<int>(track.rows)});
    }
  }
  settings.geometry.strideBytes = static_cast<size_t>(StrideBytes());
  settings.geometry.encoding = Encoding();

  settings.scene = configuration.scene;
  settings.exposure.exposureSeconds = exposureSeconds;
  settings.exposure.accumulations = static_cast<int>(accumulateCount);
  return settings;
}

} // namespace vxsim
