// SPDX-License-Identifier: MIT
// Picks the scene that settings name.
#include "vxcore/simulated/imaging/IScene.h"

#include "vxcore/simulated/imaging/TBeadScene.h"
#include "vxcore/simulated/imaging/TDarkScene.h"
#include "vxcore/simulated/imaging/TFlatScene.h"
#include "vxcore/simulated/imaging/TGradientScene.h"
#include "vxcore/simulated/imaging/TResolutionChartScene.h"
#include "vxcore/simulated/imaging/TStarFieldScene.h"

namespace vxsim {

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
