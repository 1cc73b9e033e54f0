// SPDX-License-Identifier: MIT
// The wait for a stable temperature.
#include "tools/TCoolingWait.h"

#include "tools/Messages.h"

#include <chrono>
#include <cstdio>
#include <thread>

namespace vxtool {

namespace {
constexpr std::chrono::milliseconds kPause{100};
} // namespace

std::string CoolingText(const TCoolingProgress& progress)
{
  char text[160];
  if (progress.finalCelsius) {
    const int end = *progress.finalCelsius;
    const std::string way = end == progress.targetCelsius ? "" : " on its way to " + std::to_string(end) + " C";
    std::snprintf(text, sizeof text, "temperature: %.1f C, target %d C%s, %.0f s", progress.celsius,
                  progress.targetCelsius, way.c_str(), progress.seconds);
  } else
    std::snprintf(text, sizeof text, "cooling: %.1f C, target %d C, %s, %.0f s", progress.celsius,
                  progress.targetCelsius, vxmcd_GetResultName(progress.state), progress.seconds);
  return text;
}

CoolingEnd TCoolingWait::Fail(const std::string& message)
{
  message_ = "--wait-stable: " + message;
  return CoolingEnd::Failed;
}

CoolingEnd TCoolingWait::Run(const std::function<TAnswer<TTemperature>()>& ask,
                             const std::function<bool()>& isInterrupted,
                             const std::function<void(const TCoolingProgress&)>& onProgress)
{
  const auto start = std::chrono::steady_clock::now();
  for (;;) {
    if (isInterrupted()) return CoolingEnd::Interrupted;
    const TAnswer<TTemperature> answer = ask();
    if (!answer.value) return Fail(ResultText(answer.function, answer.code));
    last_.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    last_.celsius = static_cast<double>(answer.value->celsius);
    last_.targetCelsius = targetCelsius_;
    last_.state = answer.value->state;
    if (last_.state == RC_TEMP_STABILIZED) return CoolingEnd::Done;
    if (last_.state == RC_SUCCESS) return Fail("the camera does not report whether its temperature is stable");
    if (last_.state == RC_TEMP_OFF) return Fail(ResultText(answer.function, last_.state));
    onProgress(last_);
    if (limitSeconds_ > 0.0 && last_.seconds >= limitSeconds_)
      return Fail("not stable within the time limit (" + CoolingText(last_) + ")");
    std::this_thread::sleep_for(kPause); // between two looks at a thing that takes minutes
  }
}

} // namespace vxtool
