// SPDX-License-Identifier: MIT
// The sensor and the image area on it.
#include "features/current_core_handle.h"
#include "features/feature_names.h"
#include "vxcore.h"
#include "vxmcd.h"

namespace {

// Leaves the output as it is when the read fails.
bool ReadInt(int coreHandle, const wchar_t* feature, int* output)
{
  long long value = 0;
  if (VX_GetInt(coreHandle, feature, &value) != VX_SUCCESS) return false;
  if (output) *output = static_cast<int>(value);
  return true;
}

} // namespace

unsigned int GetDetector(int* xpixels, int* ypixels)
{
  const int coreHandle = CurrentCoreHandle();
  if (coreHandle == kNoCoreHandle) return RC_NOT_INITIALIZED;
  const bool hasHeight = ReadInt(coreHandle, Feature::kSensorHeight, ypixels);
  const bool hasWidth = ReadInt(coreHandle, Feature::kSensorWidth, xpixels);
  if (!hasWidth) return RC_P1_INVALID;
  if (!hasHeight) return RC_P2_INVALID;
  return RC_SUCCESS;
}
