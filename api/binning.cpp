// SPDX-License-Identifier: MIT
// Binning factors as the camera takes them.
#include "api/binning.h"

#include "features/current_core_handle.h"
#include "features/feature_access.h"
#include "features/feature_names.h"
#include "utility/TQuorinMisc.h"
#include "vxmcd_result_codes.h"

namespace {

constexpr int kTextLength = 256;

int OutOfRangeAs(int code, int resultCode)
{
  return code == VX_ERR_OUT_OF_RANGE ? resultCode : code;
}

} // namespace

int setHorizontalBinning(int bin)
{
  return OutOfRangeAs(WriteInt(CurrentCoreHandle(), Feature::kAOIHBin, bin), RC_P1_INVALID);
}

int setVerticalBinning(int bin)
{
  return OutOfRangeAs(WriteInt(CurrentCoreHandle(), Feature::kAOIVBin, bin), RC_P2_INVALID);
}

int setCombinedBinning(int bin)
{
  wchar_t text[kTextLength] = {};
  QuorinUtility::TQuorinMisc::snwprintf(text, kTextLength, L"%dx%d", bin, bin);
  return OutOfRangeAs(WriteText(CurrentCoreHandle(), Feature::kAOIBinning, text), RC_P1_INVALID);
}

int setBinningOptions(int hbin, int vbin)
{
  if (setHorizontalBinning(hbin) == VX_ERR_NOT_IMPLEMENTED) return setCombinedBinning(hbin);
  return setVerticalBinning(vbin);
}
