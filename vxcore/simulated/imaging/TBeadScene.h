// SPDX-License-Identifier: MIT
// Fluorescent beads under a microscope.
#pragma once

#include "vxcore/simulated/imaging/IScene.h"

#include <array>

namespace vxsim {

/// Beads of different brightness and focus that jitter as if in water, over the uneven glow of what they swim in.
/// A bead's path is a sum of sine waves of many periods, so that any moment can be looked at without those before
/// it.
class TBeadScene final : public IScene
{
public:
  TBeadScene(const TSensorSettings& sensor, const TSceneSettings& scene);

  void BackgroundRow(int row, int left, std::span<float> photonsPerSecond) const override;
  void SpotsAt(double seconds, std::vector<TLightSpot>& spots) const override;

private:
  static constexpr std::size_t kWaves = 6;

  struct TBead
  {
    TLightSpot home;
    std::array<double, 2 * kWaves> phases{}; // x and y of each wave
    double reachPixels = 0.0;
  };

  /// A soft round light of the background; several make a cell.
  struct TGlow
  {
    double yPixels = 0.0;
    double sigmaPixels = 1.0;
    std::size_t firstColumn = 0;
    std::vector<float> profile; // photons per second along the row through the middle
  };

  void AddCells(const TSensorSettings& sensor);
  void AddGlow(double xPixels, double yPixels, double sigmaPixels, double peakPhotonsPerSecond);
  void AddBeads(const TSensorSettings& sensor, int count);

  double widthPixels_;
  double heightPixels_;
  double backgroundPhotonsPerSecond_;
  double motionScale_;
  std::vector<TGlow> glows_;
  std::vector<TBead> beads_;
};

} // namespace vxsim
