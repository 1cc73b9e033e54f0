// SPDX-License-Identifier: MIT
// Planned faults of the frames of a simulated sensor.
#pragma once

#include "vxcore/backend/IFrameFaults.h"
#include "vxcore/simulated/TDeviceStatus.h"
#include "vxcore/simulated/TFrameBuffers.h"

#include <chrono>
#include <cstdint>
#include <vector>

namespace vxsim {

/// Asks the fault plan about each exposed frame and does what it says, and knows until when the sensor is late.
/// Owned by TAcquisition, guarded by its lock; borrows the plan.
class TSensorFaults final
{
public:
  using TClock = std::chrono::steady_clock;
  enum class EOutcome
  {
    Exposed,
    Lost,
    Unplugged ///< the frame is lost, and the camera is unplugged
  };

  explicit TSensorFaults(vxcore::IFrameFaults& plan) : plan_(plan) {}

  bool IsEmpty() const { return plan_.IsEmpty(); }

  /// Applies the plan to a frame that was just exposed; notes in it what is to be done when it is delivered.
  /// @param status      the camera's, which the plan may unplug
  /// @param delayNs     what the sensor's next frames are delayed by
  EOutcome Apply(TExposedFrame& frame, bool hasMetadata, TDeviceStatus& status, int64_t& delayNs);

  /// Whether frames wait until DelayedUntil(). Forgets a delay that is over.
  bool IsDelayed()
  {
    if (!HasDelay()) return false;
    if (TClock::now() < delayedUntil_) return true;
    ClearDelay();
    return false;
  }
  bool HasDelay() const { return delayedUntil_ != TClock::time_point{}; }
  TClock::time_point DelayedUntil() const { return delayedUntil_; }
  void ClearDelay() { delayedUntil_ = {}; }

  /// Chooses where a frame with faults goes. False: there is nothing to paint, the answer is complete.
  bool Place(const TExposedFrame& frame, int frameBytes, int64_t imageSizeBytes, TFrameBuffers& buffers,
             TAnswer& answer);
  /// Changes the bytes and the size of a painted frame.
  static void Damage(const TExposedFrame& frame, TAnswer& answer);

private:
  vxcore::IFrameFaults& plan_;
  TClock::time_point delayedUntil_{};
  std::vector<unsigned char> foreignBuffer_;
};

} // namespace vxsim
