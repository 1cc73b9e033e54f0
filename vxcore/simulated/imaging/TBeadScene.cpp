// SPDX-License-Identifier: MIT
// Fluorescent beads under a microscope.
#include "vxcore/simulated/imaging/TBeadScene.h"

#include "vxcore/simulated/imaging/TRandomHash.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace vxsim {
namespace {

constexpr double kPixelsPerBead = 9000.0;
constexpr int kMinBeads = 12;
constexpr double kPeakPhotonsPerSecond = 6e5; // in the middle of the brightest bead in focus
constexpr double kCellPhotonsPerSecond = 9e3; // in the middle of one of a cell's glows
constexpr double kHazePhotonsPerSecond = 1500.0;
constexpr int kCells = 13;
constexpr int kGlowsPerCell = 6;
constexpr double kGlowReachSigmas = 3.5;
constexpr double kOutOfFocusShare = 0.3;
constexpr double kLowestHertz = 0.11;
constexpr double kWaveRatio =
    1.93; // between the frequencies of two waves; not 2, so that paths do not repeat soon
constexpr double kCornerFalloff = 0.6;

} // namespace

TBeadScene::TBeadScene(const TSensorSettings& sensor, const TSceneSettings& scene)
    : widthPixels_(sensor.widthPixels),
      heightPixels_(sensor.heightPixels),
      backgroundPhotonsPerSecond_(scene.backgroundPhotonsPerSecond),
      motionScale_(scene.motionScale)
{
  const int suited = std::max(kMinBeads, static_cast<int>(widthPixels_ * heightPixels_ / kPixelsPerBead));
  AddBeads(sensor, scene.objectCount > 0 ? scene.objectCount : suited);
  AddCells(sensor);
}

void TBeadScene::AddBeads(const TSensorSettings& sensor, int count)
{
  TRandomHash random(sensor.seed, 0xBEAD);
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

/// A cell is a handful of glows along a line that bends, brightest at its nucleus.
void TBeadScene::AddCells(const TSensorSettings& sensor)
{
  TRandomHash random(sensor.seed, 0xCE11);
  const double side = std::min(widthPixels_, heightPixels_);
  for (int cell = 0; cell < kCells; ++cell) {
    double x = random.NextUnit() * widthPixels_;
    double y = random.NextUnit() * heightPixels_;
    double heading = random.NextBetween(0.0, 2.0 * std::numbers::pi);
    const double size = side * random.NextBetween(0.025, 0.05);
    const double light = kCellPhotonsPerSecond * random.NextBetween(0.3, 1.0);
    for (int glow = 0; glow < kGlowsPerCell; ++glow) {
      const double thin = 1.0 - 0.75 * std::abs(glow - 2) / kGlowsPerCell;
      AddGlow(x, y, size * thin, light * thin * thin);
      heading += random.NextBetween(-0.7, 0.7);
      x += std::cos(heading) * size * 1.1;
      y += std::sin(heading) * size * 1.1;
    }
    AddGlow(x, y, size * 0.3, light * 0.8);
  }
}

void TBeadScene::AddGlow(double xPixels, double yPixels, double sigmaPixels, double peakPhotonsPerSecond)
{
  const double reach = kGlowReachSigmas * sigmaPixels;
  const double first = std::max(0.0, std::floor(xPixels - reach));
  const double end = std::min(widthPixels_, std::ceil(xPixels + reach));
  TGlow glow;
  glow.yPixels = yPixels;
  glow.sigmaPixels = sigmaPixels;
  glow.firstColumn = static_cast<std::size_t>(first);
  for (double column = first; column < end; column += 1.0) {
    const double away = (column + 0.5 - xPixels) / sigmaPixels;
    glow.profile.push_back(static_cast<float>(peakPhotonsPerSecond * std::exp(-0.5 * away * away)));
  }
  if (!glow.profile.empty()) glows_.push_back(std::move(glow));
}

void TBeadScene::BackgroundRow(int row, int left, std::span<float> photonsPerSecond) const
{
  const double y = (row + 0.5) / heightPixels_ - 0.5;
  double column = left + 0.5;
  for (float& value : photonsPerSecond) { // the lamp is brightest in the middle
    const double x = column / widthPixels_ - 0.5;
    const double lamp = 1.0 - kCornerFalloff * 2.0 * (x * x + y * y);
    value = static_cast<float>((backgroundPhotonsPerSecond_ + kHazePhotonsPerSecond) * lamp);
    column += 1.0;
  }
  const auto begin = static_cast<std::size_t>(left);
  const std::size_t end = begin + photonsPerSecond.size();
  for (const TGlow& glow : glows_) {
    const double away = (row + 0.5 - glow.yPixels) / glow.sigmaPixels;
    if (std::abs(away) > kGlowReachSigmas) continue;
    const auto share = static_cast<float>(std::exp(-0.5 * away * away));
    const std::size_t last = std::min(end, glow.firstColumn + glow.profile.size());
    for (std::size_t i = std::max(begin, glow.firstColumn); i < last; ++i)
      photonsPerSecond[i - begin] += share * glow.profile[i - glow.firstColumn];
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
