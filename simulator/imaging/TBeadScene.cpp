// SPDX-License-Identifier: MIT
// Fluorescent beads under a microscope.
#include "simulator/imaging/TBeadScene.h"

#include "simulator/imaging/TRandomHash.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace vxsim {
namespace {

constexpr double kPixelsPerBead = 9000.0;
constexpr int kLeastBeads = 12;
constexpr double kPeakPhotonsPerSecond = 6e5; // in the middle of the brightest bead in focus
constexpr double kGlowPhotonsPerSecond = 9e3;
constexpr double kOutOfFocusShare = 0.3;
constexpr double kLowestHertz = 0.11;
constexpr double kWaveRatio =
    1.93; // between the frequencies of two waves; not 2, so that paths do not repeat soon
constexpr double kCornerFalloff = 0.6;

int CellPixels(const TSensorSettings& sensor, int share)
{
  return std::max(8, std::max(sensor.widthPixels, sensor.heightPixels) / share);
}

} // namespace

TBeadScene::TBeadScene(const TSensorSettings& sensor, const TSceneSettings& scene)
    : widthPixels_(sensor.widthPixels),
      heightPixels_(sensor.heightPixels),
      backgroundPhotonsPerSecond_(scene.backgroundPhotonsPerSecond),
      motionScale_(scene.motionScale),
      coarse_(MixBits(sensor.seed ^ 0xC0), CellPixels(sensor, 5)),
      fine_(MixBits(sensor.seed ^ 0xF1), CellPixels(sensor, 19))
{
  TRandomHash random(sensor.seed, 0xBEAD);
  const int suited = std::max(kLeastBeads, static_cast<int>(widthPixels_ * heightPixels_ / kPixelsPerBead));
  const int count = scene.objectCount > 0 ? scene.objectCount : suited;
  for (int i = 0; i < count; ++i) {
    TBead bead;
    bead.home.xPixels = random.NextUnit() * widthPixels_;
    bead.home.yPixels = random.NextUnit() * heightPixels_;
    const bool inFocus = random.NextUnit() >= kOutOfFocusShare;
    const double focused = random.NextBetween(1.8, 3.2);
    bead.home.sigmaPixels = inFocus ? focused : focused * random.NextBetween(1.6, 3.0);
    const double peak = kPeakPhotonsPerSecond * random.NextBetween(0.15, 1.0);
    bead.home.photonsPerSecond = peak * 2.0 * std::numbers::pi * focused * focused; // blur spreads the same light
    bead.reachPixels = random.NextBetween(6.0, 22.0) * 1.8 / focused;               // small beads move more
    for (double& phase : bead.phases) phase = random.NextUnit() * 2.0 * std::numbers::pi;
    beads_.push_back(bead);
  }
}

void TBeadScene::BackgroundRow(int row, int left, std::span<float> photonsPerSecond) const
{
  std::fill(photonsPerSecond.begin(), photonsPerSecond.end(), 0.0f);
  coarse_.AddRow(row, left, 0.65f, photonsPerSecond);
  fine_.AddRow(row, left, 0.35f, photonsPerSecond);
  const double y = (row + 0.5) / heightPixels_ - 0.5;
  double column = left + 0.5;
  for (float& value : photonsPerSecond) {
    const double x = column / widthPixels_ - 0.5;
    const double lamp = 1.0 - kCornerFalloff * 2.0 * (x * x + y * y);
    const double glow = static_cast<double>(value) * value * kGlowPhotonsPerSecond;
    value = static_cast<float>((backgroundPhotonsPerSecond_ + glow) * lamp);
    column += 1.0;
  }
}

void TBeadScene::SpotsAt(double seconds, std::vector<TLightSpot>& spots) const
{
  for (const TBead& bead : beads_) {
    TLightSpot spot = bead.home;
    double reach = bead.reachPixels;
    double turns = 2.0 * std::numbers::pi * kLowestHertz * motionScale_ * seconds;
    for (std::size_t wave = 0; wave < kWaves; ++wave) {
      spot.xPixels += reach * std::sin(turns + bead.phases[2 * wave]);
      spot.yPixels += reach * std::sin(turns * 1.07 + bead.phases[2 * wave + 1]);
      reach /= kWaveRatio;
      turns *= kWaveRatio;
    }
    spots.push_back(spot);
  }
}

} // namespace vxsim
