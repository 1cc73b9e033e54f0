// SPDX-License-Identifier: MIT
// Boolean feature of a simulated camera.
#pragma once

#include "vxcore/simulated/TFeature.h"

namespace vxsim {

/// Boolean feature. Owned by TFeatureSet, used under the device's lock.
class TBoolFeature final : public TFeature
{
public:
  /// Without @p set the feature is read-only.
  TBoolFeature(TFeatureAccess access, uint64_t& revision, std::function<bool()> get,
               std::function<void(bool)> set);

  int SetBool(bool value) override;
  int GetBool(bool& value) const override;

private:
  const std::function<bool()> get_;
  const std::function<void(bool)> set_;
};

} // namespace vxsim
