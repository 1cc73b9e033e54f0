// SPDX-License-Identifier: MIT
// When the frames of a run begin and end.
#include "vxcore/simulated/TFrameSchedule.h"

#include <algorithm>

namespace vxsim {

namespace {

int64_t Nanoseconds(double seconds)
{
  return static_cast<int64_t>(seconds * 1e9 + 0.5);
}

} // namespace

void TFrameSchedule::Start(const TCameraState& state, int64_t nowNs)
{
  *this = TFrameSchedule();
  Retime(state);
  const ETrigger trigger = state.Trigger();
  if (trigger == ETrigger::ExternalStart)
    cause_ = ECause::TimerAfterTrigger;
  else if (trigger == ETrigger::Software || IsExternal(trigger))
    cause_ = ECause::Trigger;

  const TTriggerSource& source = state.configuration.trigger;
  pulses_ = IsExternal(trigger) && source.periodSeconds > 0.0;
  pulsePeriodNs_ = std::max<int64_t>(1, Nanoseconds(source.periodSeconds));
  pulseWidthNs_ = std::min(Nanoseconds(source.widthSeconds), pulsePeriodNs_ - 1);
  firstPulseNs_ = nowNs + Nanoseconds(source.delaySeconds);
  if (trigger == ETrigger::ExternalLevelTransition)
    edges_ = state.Choice(EChoice::TriggerConfiguration).Meaning<EEdges>();

  limited_ = state.Choice(EChoice::CycleMode).Meaning<ECycle>() == ECycle::Fixed;
  remaining_ = std::max(1LL, state.frameCount / state.accumulateCount);
  readyNs_ = nowNs;
  nextStartNs_ = nowNs;
}

bool TFrameSchedule::Trigger(int64_t nowNs)
{
  if (cause_ == ECause::Timer) return false;
  if (nowNs < readyNs_ || triggerNs_ != kNever) {
    ++triggersIgnored_;
    return false;
  }
  triggerNs_ = nowNs;
  return true;
}

int64_t TFrameSchedule::NextEndNs()
{
  if (IsFinished()) return kNever;
  const int64_t start = NextStartNs();
  return start == kNever ? kNever : start + timing_.durationNs;
}

int64_t TFrameSchedule::Take()
{
  const int64_t start = NextStartNs();
  if (cause_ == ECause::TimerAfterTrigger) cause_ = ECause::Timer;
  if (cause_ == ECause::Trigger) {
    if (triggerNs_ != kNever)
      triggerNs_ = kNever;
    else if (waitingTriggers_ > 0)
      --waitingTriggers_;
    else
      ++pulseIndex_;
  }
  readyNs_ = start + timing_.readyNs;
  nextStartNs_ = start + timing_.periodNs;
  CountFrame();
  return start;
}

void TFrameSchedule::CountFrame()
{
  if (remaining_ > 0) --remaining_;
}

void TFrameSchedule::Delay(int64_t nanoseconds)
{
  readyNs_ += nanoseconds;
  nextStartNs_ += nanoseconds;
}

int64_t TFrameSchedule::NextStartNs()
{
  if (cause_ == ECause::Timer) return nextStartNs_;
  if (triggerNs_ != kNever) return triggerNs_;
  if (waitingTriggers_ > 0) return readyNs_;
  return pulses_ ? NextPulseNs() : kNever;
}

/// The first pulse that finds the sensor ready; the ones before it are ignored.
int64_t TFrameSchedule::NextPulseNs()
{
  const int64_t perPeriod = edges_ == EEdges::Both ? 2 : 1;
  const int64_t passed = (readyNs_ - firstPulseNs_) / pulsePeriodNs_ * perPeriod - perPeriod;
  if (passed > pulseIndex_) {
    triggersIgnored_ += static_cast<uint64_t>(passed - pulseIndex_);
    pulseIndex_ = passed;
  }
  while (PulseNs(pulseIndex_) < readyNs_) {
    ++pulseIndex_;
    ++triggersIgnored_;
  }
  return PulseNs(pulseIndex_);
}

int64_t TFrameSchedule::PulseNs(int64_t index) const
{
  if (edges_ == EEdges::Both) return firstPulseNs_ + index / 2 * pulsePeriodNs_ + (index % 2) * pulseWidthNs_;
  return firstPulseNs_ + index * pulsePeriodNs_ + (edges_ == EEdges::Falling ? pulseWidthNs_ : 0);
}

} // namespace vxsim
