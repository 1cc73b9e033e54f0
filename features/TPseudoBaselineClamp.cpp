// SPDX-License-Identifier: MIT
// The baseline clamp as programs know it.
#include "features/TPseudoBaselineClamp.h"

#include "features/feature_interfaces.h"
#include "vxcore.h"

namespace {

int ToStatus(int code)
{
  switch (code) {
  case VX_SUCCESS:
    return TPseudoBaselineClamp::kDone;
  case VX_ERR_NOT_IMPLEMENTED:
    return TPseudoBaselineClamp::kNotImplemented;
  case VX_ERR_NOT_READABLE:
  case VX_ERR_NOT_AVAILABLE:
  case VX_ERR_NOT_WRITABLE:
    return TPseudoBaselineClamp::kNotAvailableNow;
  default:
    return TPseudoBaselineClamp::kFailed;
  }
}

} // namespace

int TPseudoBaselineClamp::Set(bool isOn)
{
  return ToStatus(baselineClamp_->SetBool(isOn));
}

int TPseudoBaselineClamp::Get(bool& isOn)
{
  return ToStatus(baselineClamp_->GetBool(isOn));
}
