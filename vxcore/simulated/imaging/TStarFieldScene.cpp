// SPDX-License-Identifier: MIT
// A night sky: stars of all magnitudes and a few galaxies, drifting.
#include "vxcore/simulated/imaging/TStarFieldScene.h"

#include "vxcore/simulated/imaging/TRandomHash.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace vxsim {
namespace {

constexpr double kMarginPixels = 64.0; // around the sensor, so that nothing appears or vanishes in view
constexpr double kDriftXPixelsPerSecond = 6.0;
constexpr double kDriftYPixelsPerSecond = 1.5;
constexpr double kPixelsPerStar = 2200.0;
constexpr int kMinStars = 24;
constexpr double kFaintestPhotonsPerSecond = 3e4;
constexpr double kBrightestPhotonsPerSecond = 6e7;
constexpr double kMagnitudeSlope = 0.85; // the number of stars brighter than f goes as f^-slope
constexpr double kSeeingSigmaPixels = 1.25;
constexpr double kHaloFraction = 0.06;
constexpr double kHaloSigmaPixels = 4.5;
constexpr double kHaloFromPhotonsPerSecond = 4e5; // fainter stars' halos would not be seen
constexpr int kGalaxySpots = 64;
constexpr double kPixelsPerGalaxy = 700000.0;
constexpr double kCornerFalloff = 0.35;

double Wrapped(double position, double extent)
{
  const double span = extent + 2.0 * kMarginPixels;
  const double shifted = std::fmod(position + kMarginPixels, span);
  return (shifted < 0.0 ? shifted + span : shifted) - kMarginPixels;
}

} // namespace

TStarFieldScene::TStarFieldScene(const TSensorSettings& sensor, const TSceneSettings& scene)
    : widthPixels_(sensor.widthPixels),
      heightPixels_(sensor.heightPixels),
      skyPhotonsPerSecond_(scene.backgroundPhotonsPerSecond),
      driftScale_(scene.motionScale)
{
  const int suited = std::max(kMinStars, static_cast<int>(widthPixels_ * heightPixels_ / kPixelsPerStar));
  AddStars(sensor.seed, scene.objectCount > 0 ? scene.objectCount : suited);
  AddGalaxies(sensor.seed);
}

void TStarFieldScene::AddStars(std::uint64_t seed, int count)
{
  TRandomHash random(seed, 0x57A5);
  for (int i = 0; i < count; ++i) {
    TLightSpot star;
    star.xPixels = random.NextBetween(-kMarginPixels, widthPixels_ + kMarginPixels);
    star.yPixels = random.NextBetween(-kMarginPixels, heightPixels_ + kMarginPixels);
    star.sigmaPixels = kSeeingSigmaPixels;
    const double brighter = std::pow(1.0 - random.NextUnit(), -1.0 / kMagnitudeSlope);
    star.photonsPerSecond = std::min(kFaintestPhotonsPerSecond * brighter, kBrightestPhotonsPerSecond);
    spots_.push_back(star);
    if (star.photonsPerSecond < kHaloFromPhotonsPerSecond) continue;
    star.sigmaPixels = kHaloSigmaPixels;
    star.photonsPerSecond *= kHaloFraction;
    spots_.push_back(star);
  }
}

void TStarFieldScene::AddGalaxies(std::uint64_t seed)
{
  TRandomHash random(seed, 0x6A1A);
  const int galaxies = std::max(1, static_cast<int>(widthPixels_ * heightPixels_ / kPixelsPerGalaxy));
  for (int galaxy = 0; galaxy < galaxies; ++galaxy) {
    const double centreX = random.NextBetween(0.1, 0.9) * widthPixels_;
    const double centreY = random.NextBetween(0.1, 0.9) * heightPixels_;
    const double radius = random.NextBetween(14.0, 34.0);
    const double tilt = random.NextBetween(0.0, std::numbers::pi);
    const double flatness = random.NextBetween(0.35, 0.9);
    const double light = random.NextBetween(2e6, 6e6);
    spots_.push_back({centreX, centreY, radius * 0.12, light * 0.35});
    for (int i = 0; i < kGalaxySpots; ++i) {
      const double along = (i / 2 + 0.5) * 2.0 / kGalaxySpots; // 0 at the core, 1 at the rim; the arms alternate
      const double angle =
          along * 1.5 * std::numbers::pi + (i % 2) * std::numbers::pi + random.NextBetween(-0.2, 0.2);
      const double x = std::cos(angle) * along * radius;
      const double y = std::sin(angle) * along * radius * flatness;
      spots_.push_back({centreX + x * std::cos(tilt) - y * std::sin(tilt),
                        centreY + x * std::sin(tilt) + y * std::cos(tilt), radius * random.NextBetween(0.05, 0.11),
                        light * 0.65 * 2.0 * (1.05 - along) / kGalaxySpots});
    }
  }
}

void TStarFieldScene::BackgroundRow(int row, int left, std::span<float> photonsPerSecond) const
{
  const double y = (row + 0.5) / heightPixels_ - 0.5;
  double column = left + 0.5;
  for (float& value : photonsPerSecond) {
    const double x = column / widthPixels_ - 0.5;
    value = static_cast<float>(skyPhotonsPerSecond_ * (1.0 - kCornerFalloff * 2.0 * (x * x + y * y)));
    column += 1.0;
  }
}

void TStarFieldScene::SpotsAt(double seconds, std::vector<TLightSpot>& spots) const
{
  const double driftX = kDriftXPixelsPerSecond * driftScale_ * seconds;
  const double driftY = kDriftYPixelsPerSecond * driftScale_ * seconds;
  for (TLightSpot spot : spots_) {
    spot.xPixels = Wrapped(spot.xPixels + driftX, widthPixels_);
    spot.yPixels = Wrapped(spot.yPixels + driftY, heightPixels_);
    spots.push_back(spot);
  }
}

} // namespace vxsim
