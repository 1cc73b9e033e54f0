// SPDX-License-Identifier: MIT
// Start, trigger, wait, status, stop, and the time since the last image.
#include "tools/TRunWatch.h"

#include "tools/ResultText.h"
#include "vxmcd.h"

namespace vxtool {

namespace {

constexpr int kWaitSliceMs = 100;

} // namespace

TRunWatch::TRunWatch(ICamera& camera, const TLoopSettings& settings)
    : camera_(camera), settings_(settings), trigger_(camera, settings.triggerSeconds, settings.imageSeconds)
{
}

bool TRunWatch::Fail(const char* function, unsigned int code)
{
  message_ = ResultText(function, code);
  return false;
}

bool TRunWatch::Start()
{
  start_ = lastArrival_ = Clock::now();
  const unsigned int code = camera_.Start();
  return code == RC_SUCCESS || Fail("StartAcquisition", code);
}

bool TRunWatch::Turn(int& status)
{
  if (settings_.isSoftwareTriggered) trigger_.SendWhenDue(lastArrival_);
  const unsigned int waited = camera_.Wait(kWaitSliceMs);
  if (waited != RC_SUCCESS && waited != RC_NO_NEW_DATA) return Fail("WaitForAcquisitionTimeOut", waited);
  const unsigned int code = camera_.Status(status);
  return code == RC_SUCCESS || Fail("GetStatus", code);
}

bool TRunWatch::IsTooLate()
{
  const std::chrono::duration<double> waiting = Clock::now() - lastArrival_;
  if (settings_.noImageSeconds <= 0.0 || waiting.count() <= settings_.noImageSeconds) return false;
  message_ = "no image within the time limit; check the trigger source or raise --timeout";
  return true;
}

bool TRunWatch::Stop()
{
  int status = 0;
  if (camera_.Status(status) != RC_SUCCESS || status != static_cast<int>(RC_ACQUIRING)) return true;
  const unsigned int code = camera_.Abort();
  return code == RC_SUCCESS || code == RC_IDLE || Fail("AbortAcquisition", code);
}

void TRunWatch::ReadTimestamps(TRunAccount& account, long last)
{
  for (long next = account.TimestampsRead() + 1; next <= last; ++next) {
    long long ticks = 0;
    if (camera_.Timestamp(next, ticks) != RC_SUCCESS) return;
    account.Timestamp(ticks);
  }
}

} // namespace vxtool
