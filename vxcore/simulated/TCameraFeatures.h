// SPDX-License-Identifier: MIT
// Builds the features of a camera from its model, its configuration and its state.
#pragma once

#include "vxcore/simulated/TCameraState.h"
#include "vxcore/simulated/TFeatureSet.h"

#include <functional>
#include <string>

namespace vxsim {

/// What features ask of the camera beyond its settings.
struct TCameraActions
{
  std::function<int(TDeviceLock&)> start;
  std::function<int(TDeviceLock&)> stop;
  std::function<int()> softwareTrigger;
  std::function<long long()> timestampTicks;
  std::function<void()> resetTimestamp;
  std::function<TThermalModel&()> thermal; ///< as it is now
};

/// Whether any model has a feature of that name.
bool IsKnownFeature(std::wstring_view name);

/// Fills @p features with what the model has and the configuration leaves, and brings the state to the configured
/// values. False, with a message, when a configured value does not fit its feature.
bool BuildCameraFeatures(TCameraState& state, const TCameraActions& actions, TFeatureSet& features,
                         std::string& error);

} // namespace vxsim
