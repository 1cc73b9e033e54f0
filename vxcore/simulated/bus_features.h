// SPDX-License-Identifier: MIT
// The features of a camera's registers and buses.
#pragma once

#include "vxcore/simulated/feature_rows.h"

#include <span>

namespace vxsim {

/// The features behind which the register file and the two I2C buses are.
std::span<const TRow> BusFeatureRows();

} // namespace vxsim
