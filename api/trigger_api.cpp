// SPDX-License-Identifier: MIT
// Trigger modes and the software trigger.
#include "api/call_log.h"
#include "api/entry_points.h"
#include "api/TCameraUse.h"
#include "features/feature_access.h"
#include "features/feature_names.h"
#include "vxmcd.h"

namespace EntryPoint {

namespace {

// The "TriggerMode" text of a mode number, or null; `external` is the camera's text for its external mode.
const wchar_t* TriggerModeText(int mode, const std::wstring& external)
{
  switch (mode) {
  case 0:
    return FeatureText::kInternal;
  case 1:
    return external.c_str();
  case 6:
    return FeatureText::kExternalStart;
  case 7:
    return FeatureText::kExternalExposure;
  case 10:
    return FeatureText::kSoftware;
  default:
    return nullptr;
  }
}

} // namespace

unsigned int SetTriggerMode(int mode)
{
  const TCameraUse camera;
  if (!camera) return RC_NOT_INITIALIZED;
  std::wstring external;
  if (const unsigned int code = TriggerModeFeatureFinder(external); code != RC_SUCCESS) return code;
  const wchar_t* const text = TriggerModeText(mode, external);
  if (!text) return Refuse(RC_P1_INVALID, "the trigger modes are 0, 1, 6, 7 and 10");
  return CheckSetEnumeratedIndex(Feature::kTriggerMode, text, RC_INVALID_TRIGGER_MODE);
}

unsigned int TriggerModeFeatureFinder(std::wstring& value)
{
  const TCameraUse camera;
  if (!camera) return RC_SUCCESS;
  value = FeatureText::kExternal;
  int implemented = 0;
  if (ReadImplemented(camera.CoreHandle(), Feature::kTriggerConfiguration, implemented) != VX_SUCCESS)
    return RC_FEATURE_ERROR;
  if (implemented == 1) value = FeatureText::kExternalLevelTransition;
  return RC_SUCCESS;
}

unsigned int SendSoftwareTrigger(void)
{
  const TCameraUse camera;
  if (!camera) return RC_NOT_INITIALIZED;
  if (!isImplemented(camera.CoreHandle(), Feature::kSoftwareTrigger)) return RC_NOT_SUPPORTED;
  SendCommand(camera.CoreHandle(), Feature::kSoftwareTrigger);
  return RC_SUCCESS;
}

} // namespace EntryPoint
