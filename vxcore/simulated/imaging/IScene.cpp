// SPDX-License-Identifier: MIT
// The scenes without objects, and the choice of a scene.
#include "vxcore/simulated/imaging/IScene.h"

#include "vxcore/simulated/imaging/TBeadScene.h"
#include "vxcore/simulated/imaging/TResolutionChartScene.h"
#include "vxcore/simulated/imaging/TStarFieldScene.h"

#include <algorithm>
#include <cmath>

namespace vxsim {

namespace {

constexpr double kSteps = 16.0;

/// No light at all: only dark current and read noise remain.
class TDarkScene final : public IScene
{
public:
  void BackgroundRow(int, int, std::span<float> photonsPerSecond) const override
  {
    std::fill(photonsPerSecond.begin(), photonsPerSecond.end(), 0.0f);
  }
};

/// The same light on every pixel, for photon-transfer measurements.
class TFlatScene final : public IScene
{
public:
  explicit TFlatScene(const TSceneSettings& scene) : photonsPerSecond_(scene.flatPhotonsPerSecond) {}

  void BackgroundRow(int, int, std::span<float> photonsPerSecond) const override
  {
    std::fill(photonsPerSecond.begin(), photonsPerSecond.end(), static_cast<float>(photonsPerSecond_));
  }

private:
  const double photonsPerSecond_;
};

/// From black at the left to the scene's light at the right, for linearity and display checks: even in the upper
/// three quarters, in 16 steps below.
class TGradientScene final : public IScene
{
public:
  TGradientScene(const TSensorSettings& sensor, const TSceneSettings& scene)
      : widthPixels_(sensor.widthPixels),
        wedgeTopRow_(sensor.heightPixels - sensor.heightPixels / 4),
        peakPhotonsPerSecond_(scene.flatPhotonsPerSecond)
  {
  }

  void BackgroundRow(int row, int left, std::span<float> photonsPerSecond) const override
  {
    double column = left + 0.5;
    for (float& value : photonsPerSecond) {
      double level = column / widthPixels_;
      if (row >= wedgeTopRow_) level = std::floor(level * kSteps) / (kSteps - 1.0);
      value = static_cast<float>(level * peakPhotonsPerSecond_);
      column += 1.0;
    }
  }

private:
  const int widthPixels_;
  const int wedgeTopRow_;
  const double peakPhotonsPerSecond_;
};

} // namespace

std::unique_ptr<IScene> MakeScene(const TSensorSettings& sensor, const TSceneSettings& scene)
{
  switch (scene.kind) {
  case ESceneKind::StarField:
    return std::make_unique<TStarFieldScene>(sensor, scene);
  case ESceneKind::Beads:
    return std::make_unique<TBeadScene>(sensor, scene);
  case ESceneKind::ResolutionChart:
    return std::make_unique<TResolutionChartScene>(sensor, scene);
  case ESceneKind::Gradient:
    return std::make_unique<TGradientScene>(sensor, scene);
  case ESceneKind::Flat:
    return std::make_unique<TFlatScene>(scene);
  case ESceneKind::Dark:
    return std::make_unique<TDarkScene>();
  case ESceneKind::Counter:
  case ESceneKind::Stamp:
    return nullptr;
  }
  return nullptr;
}

} // namespace vxsim
