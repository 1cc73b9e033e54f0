// SPDX-License-Identifier: MIT
// Integer feature of a simulated camera.
#include "vxcore/simulated/TIntFeature.h"

namespace vxsim {

TIntFeature::TIntFeature(TFeatureAccess access, uint64_t& revision, TNumberBinding<long long> binding,
                         const TFeatureOverride& change)
    : TFeature(std::move(access), revision),
      binding_(std::move(binding)),
      fixedMinimum_(change.minimum),
      fixedMaximum_(change.maximum)
{
}

int TIntFeature::SetInt(long long value)
{
  if (const int code = CheckWrite(); code != VX_SUCCESS) return code;
  if (!binding_.set) return VX_ERR_NOT_WRITABLE;
  if (!(value >= Minimum() && value <= Maximum())) return VX_ERR_OUT_OF_RANGE; // also catches what is not a number
  if (binding_.accepts && !binding_.accepts(value)) return VX_ERR_OUT_OF_RANGE;
  binding_.set(value);
  Changed();
  return VX_SUCCESS;
}

int TIntFeature::GetInt(long long& value) const
{
  if (const int code = CheckRead(); code != VX_SUCCESS) return code;
  value = binding_.get();
  return VX_SUCCESS;
}

int TIntFeature::GetIntMin(long long& minimum) const
{
  if (const int code = CheckRead(); code != VX_SUCCESS) return code;
  minimum = Minimum();
  return VX_SUCCESS;
}

int TIntFeature::GetIntMax(long long& maximum) const
{
  if (const int code = CheckRead(); code != VX_SUCCESS) return code;
  maximum = Maximum();
  return VX_SUCCESS;
}

long long TIntFeature::Minimum() const
{
  if (fixedMinimum_) return static_cast<long long>(*fixedMinimum_);
  return binding_.minimum ? binding_.minimum() : binding_.get();
}

long long TIntFeature::Maximum() const
{
  if (fixedMaximum_) return static_cast<long long>(*fixedMaximum_);
  return binding_.maximum ? binding_.maximum() : binding_.get();
}

} // namespace vxsim
