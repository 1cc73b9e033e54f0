// SPDX-License-Identifier: MIT
// Acquisition and read modes, counts and overlap.
#include "api/call_log.h"
#include "api/entry_points.h"
#include "api/result_maps.h"
#include "api/TCameraUse.h"
#include "features/feature_access.h"
#include "features/feature_names.h"

namespace EntryPoint {

unsigned int SetAcquisitionMode(int mode)
{
  const TCameraUse camera;
  if (!camera) return RC_NOT_INITIALIZED;
  return ToResultCode(camera.AcquisitionMode().SetMode(mode), ResultMap::kAcquisitionMode);
}

unsigned int SetNumberAccumulations(int count)
{
  const TCameraUse camera;
  if (!camera) return RC_NOT_INITIALIZED;
  return ToResultCode(camera.AcquisitionMode().SetNumberAccumulations(count), ResultMap::kAccumulations);
}

unsigned int SetNumberKinetics(int count)
{
  const TCameraUse camera;
  if (!camera) return RC_NOT_INITIALIZED;
  return ToResultCode(camera.AcquisitionMode().SetNumberKinetics(count), ResultMap::kSeriesLength);
}

unsigned int SetReadMode(int mode)
{
  const TCameraUse camera;
  if (!camera) return RC_NOT_INITIALIZED;
  switch (mode) {
  case 2:
    WriteText(camera.CoreHandle(), Feature::kAOILayout, FeatureText::kTrack);
    return RC_SUCCESS;
  case 4:
    WriteText(camera.CoreHandle(), Feature::kAOILayout, FeatureText::kImage);
    return RC_SUCCESS;
  default:
    return Refuse(RC_P1_INVALID, "the read modes are 2 and 4");
  }
}

unsigned int SetOverlapMode(int on)
{
  const TCameraUse camera;
  if (!camera) return RC_NOT_INITIALIZED;
  return ToResultCode(WriteBool(camera.CoreHandle(), Feature::kOverlap, on), ResultMap::kSwitch);
}

unsigned int SetFrameTransferMode(int on)
{
  return SetOverlapMode(on);
}

} // namespace EntryPoint
