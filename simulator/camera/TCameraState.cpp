// SPDX-License-Identifier: MIT
// The present settings of a simulated camera, and what follows from them.
#include "simulator/camera/TCameraState.h"

#include "simulator/config/TConfigurationText.h"
#include "simulator/imaging/TMetadataWriter.h"

#include <algorithm>
#include <cwchar>

namespace vxsim {

namespace {

constexpr long long kMetadataAlignment = 8;

/// A gain text such as "x10" or "4.0" as a factor.
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
      width(cameraModel.sensorWidth),
      height(cameraModel.sensorHeight)
{
  for (const TModelChoice& choice : model.choices) {
    TChoice& mine = choices[choice.feature];
    mine.texts.assign(choice.texts.begin(), choice.texts.end());
    mine.index = choice.initial;
  }
}

const TChoice& TCameraState::Choice(std::wstring_view feature) const
{
  static const auto& none = *new TChoice;
  const auto found = choices.find(feature);
  return found == choices.end() ? none : found->second;
}

TChoice* TCameraState::FindChoice(std::wstring_view feature)
{
  const auto found = choices.find(feature);
  return found == choices.end() ? nullptr : &found->second;
}

const TModelGain& TCameraState::Gain() const
{
  const std::wstring_view channel = Choice(L"PreAmpGainChannel").Text();
  for (const TModelGain& gain : model.gains) {
    if (channel == gain.channel) return gain;
  }
  return model.gains.front();
}

double TCameraState::GainElectronsPerCount() const
{
  if (configuration.gainElectronsPerCount) return *configuration.gainElectronsPerCount;
  return Gain().electronsPerCount / GainFactor(Choice(L"PreAmpGain").Text());
}

void TCameraState::FitArea()
{
  width = std::clamp(width, 1LL, std::max(1LL, sensorWidth / horizontalBin));
  height = std::clamp(height, 1LL, std::max(1LL, sensorHeight / verticalBin));
  left = std::clamp(left, 1LL, sensorWidth - width * horizontalBin + 1);
  top = std::clamp(top, 1LL, sensorHeight - height * verticalBin + 1);
}

long long TCameraState::OutputRows() const
{
  return IsTracks() ? static_cast<long long>(tracks.size()) : height;
}

EPixelEncoding TCameraState::Encoding() const
{
  EPixelEncoding encoding = EPixelEncoding::Mono16;
  EncodingFromName(Narrow(Choice(L"PixelEncoding").Text()), encoding); // a made-up text is stored as 16 bits
  return encoding;
}

long long TCameraState::StrideBytes() const
{
  const int padding = configuration.stridePadding < 0 ? model.stridePadding : configuration.stridePadding;
  return static_cast<long long>(RowBytes(Encoding(), static_cast<int>(width))) + padding;
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

TFrameSettings TCameraState::FrameSettings() const
{
  TFrameSettings settings;
  settings.sensor.widthPixels = static_cast<int>(sensorWidth);
  settings.sensor.heightPixels = static_cast<int>(sensorHeight);
  settings.sensor.fullWellElectrons = configuration.fullWellElectrons.value_or(model.fullWellElectrons);
  settings.sensor.quantumEfficiency = model.quantumEfficiency;
  settings.sensor.darkElectronsPerSecond = model.darkElectronsPerSecond;
  settings.sensor.seed = configuration.seed;

  settings.readout.gainElectronsPerCount = GainElectronsPerCount();
  settings.readout.readNoiseElectrons = configuration.readNoiseElectrons.value_or(Gain().readNoiseElectrons);
  settings.readout.bitDepth = Gain().bitDepth;
  settings.readout.baselineClamp = baselineClamp;

  settings.geometry.leftPixels = static_cast<int>(left - 1);
  settings.geometry.topPixels = static_cast<int>(top - 1);
  settings.geometry.widthPixels = static_cast<int>(width);
  settings.geometry.heightPixels = static_cast<int>(OutputRows());
  settings.geometry.horizontalBin = static_cast<int>(horizontalBin);
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
