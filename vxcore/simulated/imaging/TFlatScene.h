// SPDX-License-Identifier: MIT
// Even light, for photon-transfer measurements.
#pragma once

#include "vxcore/simulated/imaging/IScene.h"

namespace vxsim {

/// The same light on every pixel.
class TFlatScene final : public IScene
{
public:
  explicit TFlatScene(const TSceneSettings& scene) : photonsPerSecond_(scene.flatPhotonsPerSecond) {}

  void BackgroundRow(int row, int left, std::span<float> photonsPerSecond) const override;
  void SpotsAt(double, std::vector<TLightSpot>&) const override {}

private:
  double photonsPerSecond_;
};

} // namespace vxsim
