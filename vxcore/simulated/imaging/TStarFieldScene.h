// SPDX-License-Identifier: MIT
// A night sky: stars of all magnitudes and a few galaxies, drifting.
#pragma once

#include "vxcore/simulated/imaging/IScene.h"

namespace vxsim {

/// Stars with the seeing's profile and a faint halo, spiral galaxies, and a sky glow that falls off to the
/// corners. All drift together, as behind a telescope that does not follow; what leaves at one side comes back at
/// the other.
class TStarFieldScene final : public IScene
{
public:
  TStarFieldScene(const TSensorSettings& sensor, const TSceneSettings& scene);

  void BackgroundRow(int row, int left, std::span<float> photonsPerSecond) const override;
  void SpotsAt(double seconds, std::vector<TLightSpot>& spots) const override;

private:
  void AddStars(std::uint64_t seed, int count);
  void AddGalaxies(std::uint64_t seed);

  double widthPixels_;
  double heightPixels_;
  double skyPhotonsPerSecond_;
  double driftScale_;
  std::vector<TLightSpot> spots_; // at time 0, within the field including its margin
};

} // namespace vxsim
