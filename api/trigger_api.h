// SPDX-License-Identifier: MIT
// The trigger entry point that has C++ types in its signature.
#pragma once

#include "vxmcd.h"

#include <string>

/// Finds the "TriggerMode" text that stands for an external trigger: "External Level Transition" on a camera with
/// a trigger configuration, else "External".
/// @param value  written with the text; left as it is when no camera is open, which is success
/// @return RC_SUCCESS; RC_FEATURE_ERROR when the camera cannot be asked
VXMCD_API unsigned int TriggerModeFeatureFinder(std::wstring& value);
