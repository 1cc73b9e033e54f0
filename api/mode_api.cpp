// SPDX-License-Identifier: MIT
// Acquisition and read modes, counts and overlap.
#include "acquisition/TPseudoAcquisitionMode.h"
#include "api/switch_setting.h"
#include "api/TCameraUse.h"
#include "features/current_core_handle.h"
#include "features/feature_access.h"
#include "features/feature_names.h"

unsigned int SetAcquisitionMode(int mode)
{
  const TCameraUse camera;
  if (!camera) return RC_NOT_INITIALIZED;
  return camera.AcquisitionMode().SetMode(mode) == TPseudoAcquisitionMode::kRejected ? RC_P1_INVALID : RC_SUCCESS;
}

unsigned int SetNumberAccumulations(int count)
{
  const TCameraUse camera;
  if (!camera) return RC_NOT_INITIALIZED;
  switch (camera.AcquisitionMode().SetNumberAccumulations(count)) {
  case TPseudoAcquisitionMode::kAccepted:
    return RC_SUCCESS;
  case TPseudoAcquisitionMode::kNotSupported:
    return RC_NOT_SUPPORTED;
  case TPseudoAcquisitionMode::kNotAvailableNow:
    return RC_NOT_AVAILABLE;
  default:
    return RC_P1_INVALID;
  }
}

unsigned int SetNumberKinetics(int count)
{
  const TCameraUse camera;
  if (!camera) return RC_NOT_INITIALIZED;
  switch (camera.AcquisitionMode().SetNumberKinetics(count)) {
  case TPseudoAcquisitionMode::kAccepted:
  case TPseudoAcquisitionMode::kNotAvailableNow:
    return RC_SUCCESS;
  case TPseudoAcquisitionMode::kNotSupported:
    return RC_NOT_SUPPORTED;
  default:
    return RC_P1_INVALID;
  }
}

unsigned int SetReadMode(int mode)
{
  const int coreHandle = CurrentCoreHandle();
  if (coreHandle == kNoCoreHandle) return RC_NOT_INITIALIZED;
  switch (mode) {
  case 2:
    WriteText(coreHandle, Feature::kAOILayout, FeatureText::kTrack);
    return RC_SUCCESS;
  case 4:
    WriteText(coreHandle, Feature::kAOILayout, FeatureText::kImage);
    return RC_SUCCESS;
  default:
    return RC_P1_INVALID;
  }
}

unsigned int SetOverlapMode(int on)
{
  return WriteSwitch(Feature::kOverlap, on);
}

unsigned int SetFrameTransferMode(int on)
{
  return SetOverlapMode(on);
}
