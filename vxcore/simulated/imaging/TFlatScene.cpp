// SPDX-License-Identifier: MIT
// Even light, for photon-transfer measurements.
#include "vxcore/simulated/imaging/TFlatScene.h"

#include <algorithm>

namespace vxsim {

void TFlatScene::BackgroundRow(int, int, std::span<float> photonsPerSecond) const
{
  std::fill(photonsPerSecond.begin(), photonsPerSecond.end(), static_cast<float>(photonsPerSecond_));
}

} // namespace vxsim
