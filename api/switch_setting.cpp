// SPDX-License-Identifier: MIT
// Settings that are a boolean feature of the camera and nothing more.
#include "api/switch_setting.h"

#include "features/current_core_handle.h"
#include "features/feature_access.h"
#include "vxmcd_result_codes.h"

unsigned int WriteSwitch(const wchar_t* feature, int on)
{
  const int coreHandle = CurrentCoreHandle();
  if (coreHandle == kNoCoreHandle) return RC_NOT_INITIALIZED;
  switch (WriteBool(coreHandle, feature, on)) {
  case VX_ERR_NOT_IMPLEMENTED:
    return RC_NOT_SUPPORTED;
  case VX_ERR_NOT_READABLE:
  case VX_ERR_NOT_WRITABLE:
    return RC_NOT_AVAILABLE;
  case VX_ERR_OUT_OF_RANGE:
    return RC_P1_INVALID;
  default:
    return RC_SUCCESS;
  }
}
