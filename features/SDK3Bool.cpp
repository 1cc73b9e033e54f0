// SPDX-License-Identifier: MIT
// A boolean feature of an open device.
#include "features/SDK3Bool.h"

#include "vxcore.h"

int SDK3Bool::SetBool(bool value)
{
  return VX_SetBool(coreHandle_, feature_, value ? 1 : 0);
}

int SDK3Bool::GetBool(bool& value)
{
  int flag = value ? 1 : 0;
  const int code = VX_GetBool(coreHandle_, feature_, &flag);
  value = flag != 0;
  return code;
}
