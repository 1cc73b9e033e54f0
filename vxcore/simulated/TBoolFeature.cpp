// SPDX-License-Identifier: MIT
// Boolean feature of a simulated camera.
#include "vxcore/simulated/TBoolFeature.h"

namespace vxsim {

TBoolFeature::TBoolFeature(TFeatureAccess access, uint64_t& revision, std::function<bool()> get,
                           std::function<void(bool)> set)
    : TFeature(std::move(access), revision), get_(std::move(get)), set_(std::move(set))
{
}

int TBoolFeature::SetBool(bool value)
{
  if (const int code = CheckWrite(); code != VX_SUCCESS) return code;
  if (!set_) return VX_ERR_NOT_WRITABLE;
  set_(value);
  Changed();
  return VX_SUCCESS;
}

int TBoolFeature::GetBool(bool& value) const
{
  if (const int code = CheckRead(); code != VX_SUCCESS) return code;
  value = get_();
  return VX_SUCCESS;
}

} // namespace vxsim
