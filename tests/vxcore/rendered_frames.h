// SPDX-License-Identifier: MIT
// Frames as the tests of the imaging half want them.
#pragma once

#include "vxcore/simulated/imaging/TFrameRenderer.h"

#include <cstdint>
#include <vector>

using TBytes = std::vector<unsigned char>;
using TCounts = std::vector<std::int32_t>;

/// An evenly lit sensor that shows nothing but what a test sets.
vxsim::TFrameSettings PlainSettings(int side);

TBytes RenderBytes(vxsim::TFrameRenderer& renderer, const vxsim::TFrameSettings& settings);

TCounts RenderCounts(vxsim::TFrameRenderer& renderer, const vxsim::TFrameSettings& settings);
TCounts RenderCounts(const vxsim::TFrameSettings& settings);

double Mean(const TCounts& counts);
