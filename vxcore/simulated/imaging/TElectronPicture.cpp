// SPDX-License-Identifier: MIT
// The noiseless picture behind a camera's frames.
#include "vxcore/simulated/imaging/TElectronPicture.h"

#include "vxcore/simulated/imaging/TNoiseTable.h"
#include "vxcore/simulated/imaging/TRandomHash.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

namespace vxsim {
namespace {

constexpr double kSpotReachSigmas = 4.0;
constexpr double kCoolestHotPixel = 50.0; // times the ordinary dark current
constexpr double kHottestHotPixel = 1000.0;
constexpr std::size_t kBlock = TNoiseTable::kBlockPixels;

/// The share of a normal profile below a point, tabulated for speed.
class TNormalShare final
{
public:
  TNormalShare()
  {
    for (std::size_t i = 0; i < shares_.size(); ++i)
      shares_[i] = 0.5 * std::erfc(-(static_cast<double>(i) / kPerSigma - kReach) / std::numbers::sqrt2);
  }

  double Below(double sigmas) const
  {
    const double place = (std::clamp(sigmas, -kReach, kReach) + kReach) * kPerSigma;
    const auto index = std::min(static_cast<std::size_t>(place), shares_.size() - 2);
    return shares_[index] + (shares_[index + 1] - shares_[index]) * (place - static_cast<double>(index));
  }

private:
  static constexpr double kReach = 6.0;
  static constexpr double kPerSigma = 256.0;
  std::array<double, 2 * 6 * 256 + 1> shares_{};
};

const TNormalShare& NormalShare()
{
  static const TNormalShare share;
  return share;
}

/// A range of sensor pixels around a spot's centre, cut to those read out.
struct TRange
{
  int first;
  int end;
};

TRange Around(double centre, double reach, int first, int end)
{
  const double from = std::floor(centre - reach);
  const double to = std::ceil(centre + reach);
  if (!(to > first) || !(from < end)) return {first, first};
  return {std::max(first, static_cast<int>(from)), std::min(end, static_cast<int>(to))};
}

} // namespace

TElectronPicture::TElectronPicture(const TSensorSettings& sensor, const TGeometrySettings& geometry,
                                   const TSceneSettings& scene)
    : map_(sensor, geometry),
      scene_(MakeScene(sensor, scene)),
      electronsPerPhoton_(sensor.quantumEfficiency * scene.brightness),
      blocksPerRow_((static_cast<std::size_t>(geometry.widthPixels) + kBlock - 1) / kBlock)
{
  rates_.resize(static_cast<std::size_t>(map_.Width()) * static_cast<std::size_t>(map_.Height()));
  std::vector<float> sensorRow(static_cast<std::size_t>(map_.EndColumn() - map_.FirstColumn()));
  for (int output = 0; output < map_.Height(); ++output) {
    float* const out = rates_.data() + static_cast<std::size_t>(output) * static_cast<std::size_t>(map_.Width());
    const TTrack& rows = map_.SensorRows(output);
    for (int row = rows.topRow; row < rows.topRow + rows.rowCount; ++row) {
      scene_->BackgroundRow(row, map_.FirstColumn(), sensorRow);
      const auto bin = static_cast<std::size_t>(map_.HorizontalBin());
      for (std::size_t i = 0; i < sensorRow.size(); ++i)
        out[i / bin] += sensorRow[i] * static_cast<float>(electronsPerPhoton_);
    }
  }
  FindBlockMinima();
  PlaceHotPixels(sensor);
}

void TElectronPicture::FindBlockMinima()
{
  for (int output = 0; output < map_.Height(); ++output) {
    const std::span<const float> row = Row(output);
    for (std::size_t first = 0; first < row.size(); first += kBlock) {
      const auto block = row.subspan(first, std::min(kBlock, row.size() - first));
      blockMinima_.push_back(*std::min_element(block.begin(), block.end()));
    }
  }
}

/// Hot pixels belong to the sensor: the same ones are hot in every area that is read out.
void TElectronPicture::PlaceHotPixels(const TSensorSettings& sensor)
{
  const auto width = static_cast<std::uint64_t>(sensor.widthPixels);
  const auto pixels = width * static_cast<std::uint64_t>(sensor.heightPixels);
  const auto count = static_cast<std::uint64_t>(sensor.hotPixelFraction * static_cast<double>(pixels) + 0.5);
  TRandomHash random(sensor.seed, 0x407);
  for (std::uint64_t i = 0; i < count; ++i) {
    const std::uint64_t pixel = random.NextBelow(pixels);
    const double times = kCoolestHotPixel * std::pow(kHottestHotPixel / kCoolestHotPixel, random.NextUnit());
    const int column = static_cast<int>(pixel % width);
    if (column < map_.FirstColumn() || column >= map_.EndColumn()) continue;
    const int output = (column - map_.FirstColumn()) / map_.HorizontalBin();
    for (const int row : map_.OutputRows(static_cast<int>(pixel / width)))
      hotPixels_.push_back({static_cast<std::size_t>(row) * static_cast<std::size_t>(map_.Width()) +
                                static_cast<std::size_t>(output),
                            static_cast<float>(times - 1.0)});
  }
}

void TElectronPicture::Update(double sceneSeconds, double darkElectronsPerSecond)
{
  const bool sameSpots = isUpdated_ && (!isMoving_ || sceneSeconds == sceneSeconds_);
  const bool sameDark = isUpdated_ && (hotPixels_.empty() || darkElectronsPerSecond == darkElectronsPerSecond_);
  if (sameSpots && sameDark) return;
  RemoveAdditions();
  spots_.clear();
  scene_->SpotsAt(sceneSeconds, spots_);
  isMoving_ = !spots_.empty();
  for (const TLightSpot& spot : spots_) AddSpot(spot);
  for (const THotPixel& hot : hotPixels_) {
    Keep(hot.place, 1);
    rates_[hot.place] += hot.excess * static_cast<float>(darkElectronsPerSecond);
  }
  isUpdated_ = true;
  sceneSeconds_ = sceneSeconds;
  darkElectronsPerSecond_ = darkElectronsPerSecond;
}

void TElectronPicture::AddSpot(const TLightSpot& spot)
{
  const double reach = kSpotReachSigmas * spot.sigmaPixels;
  const TRange columns = Around(spot.xPixels, reach, map_.FirstColumn(), map_.EndColumn());
  if (columns.first == columns.end) return;
  const double perPixel = 1.0 / spot.sigmaPixels;
  const TNormalShare& share = NormalShare();

  const int firstOutput = (columns.first - map_.FirstColumn()) / map_.HorizontalBin();
  const int lastOutput = (columns.end - 1 - map_.FirstColumn()) / map_.HorizontalBin();
  columnShares_.assign(static_cast<std::size_t>(lastOutput - firstOutput + 1), 0.0f);
  double before = share.Below((columns.first - spot.xPixels) * perPixel);
  for (int column = columns.first; column < columns.end; ++column) {
    const double behind = share.Below((column + 1 - spot.xPixels) * perPixel);
    const int output = (column - map_.FirstColumn()) / map_.HorizontalBin() - firstOutput;
    columnShares_[static_cast<std::size_t>(output)] += static_cast<float>(behind - before);
    before = behind;
  }

  const double electrons = spot.photonsPerSecond * electronsPerPhoton_;
  const TRange rows = Around(spot.yPixels, reach, 0, map_.SensorHeight());
  double above = share.Below((rows.first - spot.yPixels) * perPixel);
  for (int row = rows.first; row < rows.end; ++row) {
    const double below = share.Below((row + 1 - spot.yPixels) * perPixel);
    const auto rowElectrons = static_cast<float>(electrons * (below - above));
    above = below;
    for (const int output : map_.OutputRows(row)) {
      const std::size_t first = static_cast<std::size_t>(output) * static_cast<std::size_t>(map_.Width()) +
                                static_cast<std::size_t>(firstOutput);
      Keep(first, columnShares_.size());
      for (std::size_t i = 0; i < columnShares_.size(); ++i) rates_[first + i] += rowElectrons * columnShares_[i];
    }
  }
}

void TElectronPicture::Keep(std::size_t first, std::size_t count)
{
  touched_.push_back({first, count});
  const auto from = rates_.begin() + static_cast<std::ptrdiff_t>(first);
  kept_.insert(kept_.end(), from, from + static_cast<std::ptrdiff_t>(count));
}

/// Restores what the additions have overwritten, newest first, since they may overlap.
void TElectronPicture::RemoveAdditions()
{
  std::size_t end = kept_.size();
  for (auto touched = touched_.rbegin(); touched != touched_.rend(); ++touched) {
    end -= touched->count;
    std::copy_n(kept_.begin() + static_cast<std::ptrdiff_t>(end), touched->count,
                rates_.begin() + static_cast<std::ptrdiff_t>(touched->first));
  }
  touched_.clear();
  kept_.clear();
}

std::span<const float> TElectronPicture::Row(int outputRow) const
{
  const auto width = static_cast<std::size_t>(map_.Width());
  return std::span<const float>(rates_).subspan(static_cast<std::size_t>(outputRow) * width, width);
}

float TElectronPicture::BlockMinimum(int outputRow, std::size_t block) const
{
  return blockMinima_[static_cast<std::size_t>(outputRow) * blocksPerRow_ + block];
}

} // namespace vxsim
