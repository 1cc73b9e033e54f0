// SPDX-License-Identifier: MIT
// What a simulated sensor looks at.
#pragma once

#include "vxcore/simulated/imaging/TFrameSettings.h"

#include <memory>
#include <span>
#include <vector>

namespace vxsim {

/// A round spot of light with a normal profile. Positions are in sensor pixels; pixel i reaches from i to i + 1.
struct TLightSpot
{
  double xPixels = 0.0;
  double yPixels = 0.0;
  double sigmaPixels = 1.0;
  double photonsPerSecond = 0.0; ///< of the whole spot
};

/// Light falling onto the sensor: something that stays, and spots that may move. Constant after construction,
/// reentrant; the same moment always looks the same.
class IScene
{
public:
  virtual ~IScene() = default;

  /// Photons per pixel and second of what stays, for a sensor row from column left on.
  virtual void BackgroundRow(int row, int left, std::span<float> photonsPerSecond) const = 0;

  /// Adds the spots of that moment to the list, always in the same order and number.
  virtual void SpotsAt(double /*seconds*/, std::vector<TLightSpot>& /*spots*/) const {}
};

/// The scene of that kind; null for the test patterns, which have no optics.
std::unique_ptr<IScene> MakeScene(const TSensorSettings& sensor, const TSceneSettings& scene);

} // namespace vxsim
