// SPDX-License-Identifier: MIT
// The loop that watches a recorded run.
#include "tools/TSpoolLoop.h"

#include "tools/ResultText.h"
#include "vxmcd.h"

#include <utility>

namespace vxtool {

namespace {

constexpr int kWaitSliceMs = 100;

} // namespace

TSpoolLoop::TSpoolLoop(ICamera& camera, const TLoopSettings& settings, std::function<bool()> isInterrupted,
                       std::function<void(const TProgress&)> onProgress)
    : camera_(camera),
      settings_(settings),
      isInterrupted_(std::move(isInterrupted)),
      onProgress_(std::move(onProgress)),
      account_(settings.isPaced),
      trigger_(camera, settings.triggerSeconds, settings.imageSeconds)
{
}

RunEnd TSpoolLoop::Run()
{
  start_ = lastArrival_ = Clock::now();
  const unsigned int code = camera_.Start();
  if (code != RC_SUCCESS) return Fail("StartAcquisition", code);
  const RunEnd end = RunStarted();
  Stop();
  Look();
  seconds_ = std::chrono::duration<double>(Clock::now() - start_).count();
  return end;
}

RunEnd TSpoolLoop::RunStarted()
{
  while (!isInterrupted_()) {
    if (settings_.isSoftwareTriggered) trigger_.SendWhenDue(lastArrival_);
    const unsigned int waited = camera_.Wait(kWaitSliceMs);
    if (waited != RC_SUCCESS && waited != RC_NO_NEW_DATA) return Fail("WaitForAcquisitionTimeOut", waited);
    // The status is read before the count: when it says that the run is over, no image can follow.
    int status = 0;
    const unsigned int code = camera_.Status(status);
    if (code != RC_SUCCESS) return Fail("GetStatus", code);
    Look();
    Report();
    if (status != static_cast<int>(RC_ACQUIRING)) return FailedStatus(status);
    // Once all images are there, the run ends when they are on the disk.
    const bool isWaiting = delivered_ < settings_.wantedImages && settings_.noImageSeconds > 0.0;
    if (isWaiting &&
        std::chrono::duration<double>(Clock::now() - lastArrival_).count() > settings_.noImageSeconds) {
      message_ = "no image within the time limit; check the trigger source or raise --timeout";
      return RunEnd::CameraFailed;
    }
  }
  return RunEnd::Interrupted;
}

RunEnd TSpoolLoop::FailedStatus(int status)
{
  if (status == static_cast<int>(RC_IDLE)) {
    if (delivered_ >= settings_.wantedImages) return RunEnd::Complete;
    message_ = "the run ended after " + std::to_string(delivered_) + " images, before all were there";
    return RunEnd::CameraFailed;
  }
  // A camera that lost some of the frames asked for sends no others in their place.
  const bool isLossAll = delivered_ + account_.LostInCameraSoFar() == settings_.wantedImages;
  if (status == static_cast<int>(RC_STATUS_TIMED_OUT) && isLossAll) return RunEnd::Complete;
  Fail("GetStatus", static_cast<unsigned int>(status));
  return status == static_cast<int>(RC_STATUS_SPOOL_ISSUE) ? RunEnd::OutputFailed : RunEnd::CameraFailed;
}

// Stops a run that goes on. Frames that come until then count.
void TSpoolLoop::Stop()
{
  int status = 0;
  if (camera_.Status(status) == RC_SUCCESS && status == static_cast<int>(RC_ACQUIRING)) camera_.Abort();
}

RunEnd TSpoolLoop::Fail(const char* function, unsigned int code)
{
  message_ = ResultText(function, code);
  return RunEnd::CameraFailed;
}

void TSpoolLoop::Look()
{
  const long before = delivered_;
  camera_.TotalImages(delivered_);
  if (delivered_ > before) lastArrival_ = Clock::now();
  for (long next = account_.TimestampsRead() + 1; next <= delivered_; ++next) {
    unsigned int count = 0;
    long long ticks = 0;
    if (camera_.Timestamp(next, count, ticks) != RC_SUCCESS) return;
    account_.Timestamp(ticks);
  }
}

void TSpoolLoop::Finish(long written)
{
  Look();
  for (long image = 0; image < delivered_; ++image) account_.Fetched(image < written);
  account_.Finish(delivered_);
}

void TSpoolLoop::Report()
{
  TProgress progress;
  progress.seconds = std::chrono::duration<double>(Clock::now() - start_).count();
  progress.delivered = progress.fetched = delivered_;
  progress.wanted = settings_.wantedImages;
  progress.lost = account_.LostInCameraSoFar();
  progress.imageBytes = settings_.shape.Bytes();
  onProgress_(progress);
}

} // namespace vxtool
