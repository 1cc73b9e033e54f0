// SPDX-License-Identifier: MIT
// How long exposures, read-outs and frames take under given settings.
#pragma once

#include "vxcore/simulated/TCameraState.h"

#include <cstdint>

namespace vxsim {

/// The times that follow from a camera's settings. A plain value.
struct TFrameTiming
{
  double rowSeconds = 0.0;      ///< read-out of one sensor row
  double readoutSeconds = 0.0;  ///< read-out of the area
  double exposureSeconds = 0.0; ///< of one exposure: the setting, or the trigger pulse's width
  double fastestSeconds = 0.0;  ///< from one exposure to the next at the highest rate
  double frameRate = 0.0;       ///< in force
  double burstRate = 0.0;       ///< in force, of the exposures that are accumulated into one frame
  int64_t readyNs = 0;          ///< from the start of a frame until the sensor can begin another
  int64_t periodNs = 0;         ///< from the start of one frame to the next when the camera times itself
  int64_t durationNs = 0;       ///< from the start of a frame until its last row is read out

  /// The times of the present settings. The read-out overlaps the next exposure only with "Overlap".
  static TFrameTiming Of(const TCameraState& state);
};

} // namespace vxsim
