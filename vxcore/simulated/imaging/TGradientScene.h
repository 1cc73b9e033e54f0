// SPDX-License-Identifier: MIT
// A linear ramp above a grey wedge, for linearity and display checks.
#pragma once

#include "vxcore/simulated/imaging/IScene.h"

namespace vxsim {

/// From black at the left to the scene's light at the right: even in the upper three quarters, in 16 steps below.
class TGradientScene final : public IScene
{
public:
  TGradientScene(const TSensorSettings& sensor, const TSceneSettings& scene);

  void BackgroundRow(int row, int left, std::span<float> photonsPerSecond) const override;
  void SpotsAt(double, std::vector<TLightSpot>&) const override {}

private:
  int widthPixels_;
  int wedgeTopRow_;
  double peakPhotonsPerSecond_;
};

} // namespace vxsim
