// SPDX-License-Identifier: MIT
// Makes the pixels of simulated frames.
#include "vxcore/simulated/imaging/TFrameRenderer.h"

#include "vxcore/simulated/imaging/TCounterPattern.h"
#include "vxcore/simulated/imaging/TElectronPicture.h"
#include "vxcore/simulated/imaging/TNoiseTable.h"
#include "vxcore/simulated/imaging/TPixelEncoder.h"
#include "vxcore/simulated/imaging/TPixelKernel.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <numbers>

namespace vxsim {
namespace {

constexpr float kMaxCount = 2147483520.0f;   // the largest float below 2^31
constexpr double kCeilingSigmas = 4.0;       // of read noise above a full well
constexpr float kHidingReadVariance = 0.25f; // from here on single electrons are hidden
constexpr std::size_t kBlock = TNoiseTable::kBlockPixels;

bool IsTestPattern(ESceneKind kind)
{
  return kind == ESceneKind::Counter || kind == ESceneKind::Stamp;
}

double DarkElectronsPerSecond(const TSensorSettings& sensor, double celsius)
{
  const double doublings = (celsius - sensor.darkReferenceCelsius) / sensor.darkDoublingCelsius;
  return sensor.darkElectronsPerSecond * std::exp2(doublings);
}

/// The level of a read-out without signal: constant when clamped, else wandering with time and temperature.
double BaselineCounts(const TFrameSettings& settings)
{
  const TReadoutSettings& readout = settings.readout;
  if (readout.baselineClamp) return readout.baselineCounts;
  constexpr double kTurn = 2.0 * std::numbers::pi;
  const double seconds = settings.exposure.sceneSeconds;
  const double warmth = settings.exposure.sensorCelsius - settings.sensor.darkReferenceCelsius;
  const double wander =
      1.5 * std::sin(kTurn * seconds / 37.0) + 0.8 * std::sin(kTurn * seconds / 11.3) + 0.1 * warmth;
  return std::max(0.0, readout.baselineCounts + wander);
}

/// Read noise is stated as measured in counts, which includes their rounding; this is what to add before rounding.
/// Where the noise is too small to even the rounding out, all of it is added.
double ReadVarianceBeforeRounding(double variance, double gainElectronsPerCount)
{
  constexpr double kRounding = 1.0 / 12.0; // variance in counts
  constexpr double kEvenedOut = 0.25;
  const double squareGain = gainElectronsPerCount * gainElectronsPerCount;
  return variance - squareGain * std::clamp(variance / squareGain - kEvenedOut, 0.0, kRounding);
}

/// Binning and accumulation sum charge, noise and the room up to saturation. Every exposure brings its baseline;
/// pixels binned together share one.
TRowReadout MakeRowReadout(const TFrameSettings& settings, int pixelsSummed)
{
  const TReadoutSettings& readout = settings.readout;
  const TExposureSettings& exposure = settings.exposure;
  const double reads = static_cast<double>(pixelsSummed) * exposure.accumulations;
  const double baseline = BaselineCounts(settings);
  const double seconds = exposure.exposureSeconds * exposure.accumulations;
  const double readVariance = reads * readout.readNoiseElectrons * readout.readNoiseElectrons;
  const double largestRead = std::exp2(readout.bitDepth) - 1.0;
  const double fullWell = reads * settings.sensor.fullWellElectrons;
  const double largest = std::max(0.0, largestRead - baseline) * reads + baseline * exposure.accumulations;
  const int encodedBits = TPixelEncoder::Bits(settings.geometry.encoding);

  TRowReadout row;
  row.shiftBits = std::max(0, readout.bitDepth - encodedBits);
  const double encoded = std::exp2(encodedBits + row.shiftBits) - 1.0;
  row.exposureSeconds = static_cast<float>(seconds);
  row.darkElectrons =
      static_cast<float>(DarkElectronsPerSecond(settings.sensor, exposure.sensorCelsius) * seconds * pixelsSummed);
  row.readVariance = static_cast<float>(ReadVarianceBeforeRounding(readVariance, readout.gainElectronsPerCount));
  row.fullWellElectrons = static_cast<float>(fullWell);
  row.ceilingElectrons = static_cast<float>(fullWell + kCeilingSigmas * std::sqrt(readVariance));
  row.countsPerElectron = static_cast<float>(1.0 / readout.gainElectronsPerCount);
  row.baselineCounts = static_cast<float>(baseline * exposure.accumulations + 0.5);
  row.maximumCounts = std::min(kMaxCount, static_cast<float>(std::min(largest, encoded)));
  return row;
}

} // namespace

TFrameRenderer::TFrameRenderer() = default;
TFrameRenderer::~TFrameRenderer() = default;

bool TFrameRenderer::Check(const TFrameSettings& settings)
{
  lastError_ = FindSettingsFault(settings);
  return lastError_.empty();
}

bool TFrameRenderer::Prepare(const TFrameSettings& settings)
{
  if (!Check(settings)) return false;
  if (IsTestPattern(settings.scene.kind)) return true;
  TNoiseTable::Shared();
  PreparePicture(settings);
  return true;
}

void TFrameRenderer::PreparePicture(const TFrameSettings& settings)
{
  if (!picture_ || sensor_ != settings.sensor || geometry_ != settings.geometry || scene_ != settings.scene) {
    picture_.reset(); // its memory goes before the next one's comes
    sensor_ = settings.sensor;
    geometry_ = settings.geometry;
    scene_ = settings.scene;
    picture_ = std::make_unique<TElectronPicture>(sensor_, geometry_, scene_);
  }
  picture_->Update(settings.exposure.sceneSeconds,
                   DarkElectronsPerSecond(settings.sensor, settings.exposure.sensorCelsius));
}

bool TFrameRenderer::Render(const TFrameSettings& settings, std::span<unsigned char> buffer)
{
  if (!Check(settings)) return false;
  const std::size_t areaBytes = PixelAreaBytes(settings.geometry);
  if (buffer.size() < areaBytes) {
    lastError_ = "buffer is smaller than the frame";
    return false;
  }
  if (IsTestPattern(settings.scene.kind)) {
    const TExposureSettings& exposure = settings.exposure;
    const bool stampOnly = settings.scene.kind == ESceneKind::Stamp;
    TCounterPattern::Fill(buffer.first(areaBytes),
                          {settings.sensor.seed, exposure.runNumber, exposure.frameNumber, exposure.slot},
                          stampOnly ? TCounterPattern::EBody::Any : TCounterPattern::EBody::Pattern);
    return true;
  }
  PreparePicture(settings);
  const std::size_t strideBytes = StrideBytes(settings.geometry);
  TRowReadout readout;
  int pixelsSummed = 0;
  for (int row = 0; row < picture_->Map().Height(); ++row) {
    if (const int summed = picture_->Map().PixelsSummed(row); summed != pixelsSummed) {
      pixelsSummed = summed;
      readout = MakeRowReadout(settings, summed);
    }
    RenderRow(settings, readout, row, buffer.data() + static_cast<std::size_t>(row) * strideBytes);
  }
  return true;
}

void TFrameRenderer::RenderRow(const TFrameSettings& settings, const TRowReadout& readout, int row,
                               unsigned char* out) const
{
  const TExposureSettings& exposure = settings.exposure;
  const TNoiseTable& table = TNoiseTable::Shared();
  const std::uint64_t frameKey =
      TNoiseTable::FrameKey(settings.sensor.seed, exposure.runNumber, exposure.frameNumber);
  const std::span<const float> rates = picture_->Row(row);
  const auto noise = !settings.scene.noise                         ? TPixelKernel::EShotNoise::None
                     : readout.readVariance >= kHidingReadVariance ? TPixelKernel::EShotNoise::Blended
                                                                   : TPixelKernel::EShotNoise::Exact;
  alignas(64) std::int32_t counts[kBlock];
  for (std::size_t first = 0, block = 0; first < rates.size(); first += kBlock, ++block) {
    const auto blockRates = rates.subspan(first, std::min(kBlock, rates.size() - first));
    const float leastMean = picture_->BlockMinimum(row, block) * readout.exposureSeconds + readout.darkElectrons;
    const TNoiseDraw draw = table.Draw(frameKey, (static_cast<std::uint64_t>(row) << 32) + block, leastMean);
    TPixelKernel::Run(readout, noise, draw, blockRates, counts);
    TPixelEncoder::Encode(geometry_.encoding, std::span(counts).first(blockRates.size()), out, first);
  }
  const std::size_t rowBytes = RowBytes(geometry_.encoding, geometry_.widthPixels);
  std::memset(out + rowBytes, 0, StrideBytes(geometry_) - rowBytes);
}

} // namespace vxsim
