// SPDX-License-Identifier: MIT
// A linear ramp above a grey wedge, for linearity and display checks.
#include "vxcore/simulated/imaging/TGradientScene.h"

#include <cmath>

namespace vxsim {
namespace {

constexpr double kSteps = 16.0;

} // namespace

TGradientScene::TGradientScene(const TSensorSettings& sensor, const TSceneSettings& scene)
    : widthPixels_(sensor.widthPixels),
      wedgeTopRow_(sensor.heightPixels - sensor.heightPixels / 4),
      peakPhotonsPerSecond_(scene.flatPhotonsPerSecond)
{
}

void TGradientScene::BackgroundRow(int row, int left, std::span<float> photonsPerSecond) const
{
  double column = left + 0.5;
  for (float& value : photonsPerSecond) {
    double level = column / widthPixels_;
    if (row >= wedgeTopRow_) level = std::floor(level * kSteps) / (kSteps - 1.0);
    value = static_cast<float>(level * peakPhotonsPerSecond_);
    column += 1.0;
  }
}

} // namespace vxsim
