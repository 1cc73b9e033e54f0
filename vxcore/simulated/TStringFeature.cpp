// SPDX-License-Identifier: MIT
// String feature of a simulated camera.
#include "vxcore/simulated/TStringFeature.h"

#include <algorithm>

namespace vxsim {

TStringFeature::TStringFeature(TFeatureAccess access, uint64_t& revision, std::wstring value)
    : TFeature(std::move(access), revision), value_(std::move(value))
{
}

int TStringFeature::SetString(std::wstring_view value)
{
  if (const int code = CheckWrite(); code != VX_SUCCESS) return code;
  if (value.size() + 1 > static_cast<size_t>(kMaxLength)) return VX_ERR_OUT_OF_RANGE;
  value_ = value;
  Changed();
  return VX_SUCCESS;
}

int TStringFeature::GetString(std::wstring_view& value) const
{
  if (const int code = CheckRead(); code != VX_SUCCESS) return code;
  value = value_;
  return VX_SUCCESS;
}

int TStringFeature::GetStringMaxLength(int& length) const
{
  // A configured text may be longer than what can be written.
  length = std::max(kMaxLength, static_cast<int>(value_.size()) + 1);
  return VX_SUCCESS;
}

} // namespace vxsim
