// SPDX-License-Identifier: MIT
// An integer feature of an open device.
#include "features/SDK3Int.h"

#include "vxcore.h"

int SDK3Int::SetInt(int value)
{
  const int code = VX_SetInt(coreHandle_, feature_, value);
  if (code == VX_SUCCESS) NotifyObservers();
  return code;
}

int SDK3Int::GetInt(int& value)
{
  long long wide = value;
  const int code = VX_GetInt(coreHandle_, feature_, &wide);
  value = static_cast<int>(wide);
  return code;
}
