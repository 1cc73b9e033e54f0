// SPDX-License-Identifier: MIT
// The steps of a temperature ramp.
#include "tools/TTemperatureRamp.h"

#include "tools/Messages.h"

#include <algorithm>
#include <cmath>
#include <thread>

namespace vxtool {

namespace {

constexpr std::chrono::milliseconds kPause{100};
// A sensor that has changed by less than this in this time stays as it is: surroundings colder than the last target.
constexpr double kVisibleCelsius = 0.5;
constexpr double kRestSeconds = 60.0;

} // namespace

int TTemperatureRamp::TargetAt(double seconds) const
{
  const double degrees = std::min(std::floor(seconds * perMinute_ / 60.0), std::abs(to_ - from_) * 1.0);
  return from_ + (to_ < from_ ? -1 : 1) * static_cast<int>(degrees);
}

CoolingEnd TTemperatureRamp::Fail(const std::string& message)
{
  message_ = message;
  return CoolingEnd::Failed;
}

bool TTemperatureRamp::SetTarget(const TRampPorts& ports, int celsius)
{
  if (isTargetSet_ && celsius == last_.targetCelsius) return true;
  const unsigned int code = ports.setTarget(celsius);
  if (code != RC_SUCCESS) {
    Fail(ResultText("SetTemperature", code));
    return false;
  }
  isTargetSet_ = true;
  last_.targetCelsius = celsius;
  return true;
}

bool TTemperatureRamp::IsSensorThere()
{
  if (std::abs(last_.celsius - to_) <= kNearCelsius) return true;
  if (std::abs(last_.celsius - changeCelsius_) >= kVisibleCelsius) {
    changeCelsius_ = last_.celsius;
    changeSeconds_ = last_.seconds;
  }
  return last_.seconds - changeSeconds_ >= kRestSeconds;
}

CoolingEnd TTemperatureRamp::Run(const TRampPorts& ports, bool followsSensor)
{
  const auto start = Clock::now();
  last_.finalCelsius = to_;
  for (;;) {
    if (ports.isInterrupted()) return CoolingEnd::Interrupted;
    last_.seconds = std::chrono::duration<double>(Clock::now() - start).count();
    if (!SetTarget(ports, TargetAt(last_.seconds))) return CoolingEnd::Failed;
    const TAnswer<TTemperature> answer = ports.ask();
    if (!answer.value) return Fail(ResultText(answer.function, answer.code));
    last_.celsius = static_cast<double>(answer.value->celsius);
    last_.state = answer.value->state;
    if (last_.state == RC_TEMP_OFF) return Fail(ResultText(answer.function, last_.state));
    if (last_.targetCelsius == to_) {
      if (!followsSensor || IsSensorThere()) return CoolingEnd::Done;
    } else {
      changeCelsius_ = last_.celsius;
      changeSeconds_ = last_.seconds;
    }
    ports.onProgress(last_);
    std::this_thread::sleep_for(kPause);
  }
}

} // namespace vxtool
