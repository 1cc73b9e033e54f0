/* SPDX-License-Identifier: MIT */
/* A feature library as others could make it: three cameras are attached, and nothing else is implemented. */
#include <vxcore.h>

int VX_InitialiseLibrary(void)
{
  return VX_SUCCESS;
}
int VX_FinaliseLibrary(void)
{
  return VX_SUCCESS;
}
int VX_GetInt(int handle, const wchar_t* feature, long long* value)
{
  (void)handle;
  (void)feature;
  *value = 3;
  return VX_SUCCESS;
}
