// SPDX-License-Identifier: MIT
// The pixel readout rate of an open device.
#pragma once

#include "features/feature_names.h"
#include "features/SDK3Enum.h"

/// "PixelReadoutRate", passed through unchanged. Owned by its camera's record. As thread-safe as the feature
/// library.
class TPixelReadoutRate final : public SDK3Enum
{
public:
  explicit TPixelReadoutRate(int coreHandle) : SDK3Enum(coreHandle, Feature::kPixelReadoutRate) {}
};
