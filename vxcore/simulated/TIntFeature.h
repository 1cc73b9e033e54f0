// SPDX-License-Identifier: MIT
// Integer feature of a simulated camera.
#pragma once

#include "vxcore/simulated/TFeature.h"
#include "vxcore/simulated/TNumberBinding.h"

namespace vxsim {

/// Integer feature with limits that may follow from other settings. Owned by TFeatureSet, used under the device's
/// lock.
class TIntFeature final : public TFeature
{
public:
  TIntFeature(TFeatureAccess access, uint64_t& revision, TNumberBinding<long long> binding,
              const TFeatureOverride& change);

  int SetInt(long long value) override;
  int GetInt(long long& value) const override;
  int GetIntMin(long long& minimum) const override;
  int GetIntMax(long long& maximum) const override;

private:
  long long Minimum() const;
  long long Maximum() const;

  const TNumberBinding<long long> binding_;
  const std::optional<double> fixedMinimum_;
  const std::optional<double> fixedMaximum_;
};

} // namespace vxsim
