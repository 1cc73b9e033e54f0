// SPDX-License-Identifier: MIT
// Trigger modes and the software trigger.
#include "api/entry_points.h"
#include "api/numbered_texts.h"
#include "api/TCameraUse.h"
#include "features/feature_access.h"
#include "features/feature_names.h"
#include "vxmcd.h"

namespace EntryPoint {

namespace {

constexpr int kExternalMode = 1; // its text depends on the camera
constexpr TNumberedText kTriggerModes[] = {{0, FeatureText::kInternal},
                                           {kExternalMode, FeatureText::kExternal},
                                           {6, FeatureText::kExternalStart},
                                           {7, FeatureText::kExternalExposure},
                                           {10, FeatureText::kSoftware}};

} // namespace

unsigned int SetTriggerMode(int mode)
{
  const TCameraUse camera;
  if (!camera) return RC_NOT_INITIALIZED;
  std::wstring external;
  if (const unsigned int code = TriggerModeFeatureFinder(external); code != RC_SUCCESS) return code;
  const wchar_t* const text = TextOf(mode, kTriggerModes, "trigger modes");
  if (!text) return RC_P1_INVALID;
  return CheckSetEnumeratedIndex(Feature::kTriggerMode, mode == kExternalMode ? external.c_str() : text,
                                 RC_INVALID_TRIGGER_MODE);
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
