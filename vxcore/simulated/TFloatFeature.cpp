// SPDX-License-Identifier: MIT
// Float feature of a simulated camera.
#include "vxcore/simulated/TFloatFeature.h"

namespace vxsim {

TFloatFeature::TFloatFeature(TFeatureAccess access, uint64_t& revision, TNumberBinding<double> binding,
                             const TFeatureOverride& change)
    : TFeature(std::move(access), revision),
      binding_(std::move(binding)),
      fixedMinimum_(change.minimum),
      fixedMaximum_(change.maximum)
{
}

int TFloatFeature::SetFloat(double value)
{
  if (const int code = CheckWrite(); code != VX_SUCCESS) return code;
  if (!binding_.set) return VX_ERR_NOT_WRITABLE;
  if (!(value >= Minimum() && value <= Maximum())) return VX_ERR_OUT_OF_RANGE; // also catches what is not a number
  if (binding_.accepts && !binding_.accepts(value)) return VX_ERR_OUT_OF_RANGE;
  binding_.set(value);
  Changed();
  return VX_SUCCESS;
}

int TFloatFeature::GetFloat(double& value) const
{
  if (const int code = CheckRead(); code != VX_SUCCESS) return code;
  value = binding_.get();
  return VX_SUCCESS;
}

int TFloatFeature::GetFloatMin(double& minimum) const
{
  if (const int code = CheckRead(); code != VX_SUCCESS) return code;
  minimum = Minimum();
  return VX_SUCCESS;
}

int TFloatFeature::GetFloatMax(double& maximum) const
{
  if (const int code = CheckRead(); code != VX_SUCCESS) return code;
  maximum = Maximum();
  return VX_SUCCESS;
}

double TFloatFeature::Minimum() const
{
  if (fixedMinimum_) return static_cast<double>(*fixedMinimum_);
  return binding_.minimum ? binding_.minimum() : binding_.get();
}

double TFloatFeature::Maximum() const
{
  if (fixedMaximum_) return static_cast<double>(*fixedMaximum_);
  return binding_.maximum ? binding_.maximum() : binding_.get();
}

} // namespace vxsim
