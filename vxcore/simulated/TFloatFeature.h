// SPDX-License-Identifier: MIT
// Float feature of a simulated camera.
#pragma once

#include "vxcore/simulated/TFeature.h"
#include "vxcore/simulated/TNumberBinding.h"

namespace vxsim {

/// Float feature with limits that may follow from other settings. Owned by TFeatureSet, used under the device's
/// lock.
class TFloatFeature final : public TFeature
{
public:
  TFloatFeature(TFeatureAccess access, uint64_t& revision, TNumberBinding<double> binding,
                const TFeatureOverride& change);

  int SetFloat(double value) override;
  int GetFloat(double& value) const override;
  int GetFloatMin(double& minimum) const override;
  int GetFloatMax(double& maximum) const override;

private:
  double Minimum() const;
  double Maximum() const;

  const TNumberBinding<double> binding_;
  const std::optional<double> fixedMinimum_;
  const std::optional<double> fixedMaximum_;
};

} // namespace vxsim
