// SPDX-License-Identifier: MIT
// Acquisition and read modes, counts and overlap.
#include "api/entry_points.h"
#include "api/numbered_texts.h"
#include "api/result_maps.h"
#include "api/TCameraUse.h"
#include "features/feature_access.h"
#include "features/feature_names.h"

namespace EntryPoint {

namespace {

constexpr TNumberedText kReadModes[] = {{2, FeatureText::kTrack}, {4, FeatureText::kImage}};

} // namespace

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
  const wchar_t* const text = TextOf(mode, kReadModes, "read modes");
  if (!text) return RC_P1_INVALID;
  WriteText(camera.CoreHandle(), Feature::kAOILayout, text); // callers rely on success even if the camera refuses
  return RC_SUCCESS;
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
