// SPDX-License-Identifier: MIT
// How long the acquisition thread waits for one frame.
#include "acquisition/frame_timeout.h"

#include "features/feature_access.h"
#include "features/feature_names.h"
#include "features/TValueText.h"

#include <cmath>

namespace {

constexpr double kMarginMs = 1000.0;

bool IsTriggeredInternally(int coreHandle)
{
  TValueText mode;
  return mode.ReadPresent(coreHandle, Feature::kTriggerMode) == VX_SUCCESS && mode.Is(FeatureText::kInternal);
}

} // namespace

int FrameTimeoutMs(int coreHandle)
{
  if (!IsTriggeredInternally(coreHandle)) return kNoFrameTimeoutMs;
  double frameRate = 0.0;
  if (ReadFloat(coreHandle, Feature::kFrameRate, frameRate) != VX_SUCCESS) return kNoFrameTimeoutMs;
  long long accumulateCount = 1;
  if (ReadInt(coreHandle, Feature::kAccumulateCount, accumulateCount) != VX_SUCCESS) accumulateCount = 1;
  return FrameTimeoutMs(frameRate, accumulateCount);
}

// In floating point to the end, since a camera may report any rate; a limit that does not fit into an int is no limit.
int FrameTimeoutMs(double frameRate, long long accumulateCount)
{
  const double periodMs = std::trunc(1000.0 / frameRate * static_cast<double>(accumulateCount));
  const double timeoutMs = periodMs * 3.0 + kMarginMs;
  if (!(timeoutMs < static_cast<double>(kNoFrameTimeoutMs))) return kNoFrameTimeoutMs;
  return timeoutMs < kMarginMs ? static_cast<int>(kMarginMs) : static_cast<int>(timeoutMs);
}
