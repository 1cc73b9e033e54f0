// SPDX-License-Identifier: MIT
// When the frames of a run begin and end.
#pragma once

#include "vxcore/simulated/TFrameTiming.h"

#include <cstdint>
#include <string_view>

namespace vxsim {

/// The times of a run's frames: from the trigger mode, the pulses on the trigger inputs and the camera's timing.
/// Has no clock; times are nanoseconds on the clock of its owner. Owned by TAcquisition, guarded by its
/// lock.
class TFrameSchedule final
{
public:
  static constexpr int64_t kNever = INT64_MAX;

  /// Begins a run at @p nowNs.
  void Start(const TCameraState& state, int64_t nowNs);
  /// Applies changed settings to the frames that have not begun.
  void Retime(const TCameraState& state) { timing_ = TFrameTiming::Of(state); }

  /// A trigger at @p nowNs. False: the sensor is busy and the trigger is ignored.
  bool Trigger(int64_t nowNs);
  /// A trigger that waits until the sensor is ready.
  void TriggerWhenReady() { ++waitingTriggers_; }

  /// When the next frame will be complete: kNever when it waits for a trigger, or when the run has had all its
  /// frames.
  int64_t NextEndNs();
  /// Begins the next frame and returns its start. Only after NextEndNs() returned a time.
  int64_t Take();
  /// Counts a frame that was made outside the schedule.
  void CountFrame();
  /// Moves all that is to come by a time.
  void Delay(int64_t nanoseconds);

  /// All frames of a fixed-count run were taken.
  bool IsFinished() const { return limited_ && remaining_ == 0; }
  const TFrameTiming& Timing() const { return timing_; }
  uint64_t TriggersIgnored() const { return triggersIgnored_; }

private:
  /// What begins a frame.
  enum class ECause
  {
    Timer,             ///< the camera's own timer
    TimerAfterTrigger, ///< the same, after a first trigger
    Trigger,           ///< a trigger
  };

  int64_t NextStartNs();
  int64_t NextPulseNs();
  int64_t PulseNs(int64_t index) const;

  TFrameTiming timing_;
  ECause cause_ = ECause::Timer;
  EEdges edges_ = EEdges::Rising;
  bool pulses_ = false;
  int64_t pulsePeriodNs_ = 0;
  int64_t pulseWidthNs_ = 0;
  int64_t firstPulseNs_ = 0;
  int64_t pulseIndex_ = 0;

  bool limited_ = true;
  long long remaining_ = 0;
  int64_t readyNs_ = 0;     ///< the sensor can begin a frame from here on
  int64_t nextStartNs_ = 0; ///< by the camera's own timer
  int64_t triggerNs_ = kNever;
  uint64_t waitingTriggers_ = 0;
  uint64_t triggersIgnored_ = 0;
};

} // namespace vxsim
