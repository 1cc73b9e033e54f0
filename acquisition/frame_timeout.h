// SPDX-License-Identifier: MIT
// How long the acquisition thread waits for one frame.
#pragma once

#include <limits>

/// A time-out that never runs out in practice: 24.8 days.
inline constexpr int kNoFrameTimeoutMs = std::numeric_limits<int>::max();

/// The longest that one frame of a camera may take, in ms: three times its period and a second more when the camera
/// triggers itself, no limit otherwise.
int FrameTimeoutMs(int coreHandle);

/// The same from what the camera says: @p frameRate in Hz and the number of exposures in a frame.
int FrameTimeoutMs(double frameRate, long long accumulateCount);
