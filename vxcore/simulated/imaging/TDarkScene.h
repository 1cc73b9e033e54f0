// SPDX-License-Identifier: MIT
// A closed shutter: only dark current and read noise remain.
#pragma once

#include "vxcore/simulated/imaging/IScene.h"

#include <algorithm>

namespace vxsim {

/// No light at all.
class TDarkScene final : public IScene
{
public:
  void BackgroundRow(int, int, std::span<float> photonsPerSecond) const override
  {
    std::fill(photonsPerSecond.begin(), photonsPerSecond.end(), 0.0f);
  }
  void SpotsAt(double, std::vector<TLightSpot>&) const override {}
};

} // namespace vxsim
