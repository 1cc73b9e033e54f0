// SPDX-License-Identifier: MIT
// The loop that watches a recorded run.
#include "tools/TSpoolLoop.h"

#include "tools/ResultText.h"
#include "vxmcd.h"

#include <utility>

namespace vxtool {

TSpoolLoop::TSpoolLoop(ICamera& camera, const TLoopSettings& settings, std::function<bool()> isInterrupted,
                       std::function<void(const TProgress&)> onProgress)
    : camera_(camera),
      settings_(settings),
      isInterrupted_(std::move(isInterrupted)),
      onProgress_(std::move(onProgress)),
      account_(settings.isPaced),
      watch_(camera, settings)
{
}

RunEnd TSpoolLoop::Run()
{
  if (!watch_.Start()) return Fail(watch_.Message());
  const RunEnd end = RunStarted();
  watch_.Stop(); // frames that come until then count
  Look();
  seconds_ = watch_.Seconds();
  return end;
}

RunEnd TSpoolLoop::RunStarted()
{
  while (!isInterrupted_()) {
    int status = 0;
    if (!watch_.Turn(status)) return Fail(watch_.Message());
    Look();
    Report();
    if (status != static_cast<int>(RC_ACQUIRING)) return EndOf(status);
    // Once all images are there, the run ends when they are on the disk.
    if (delivered_ < settings_.wantedImages && watch_.IsTooLate()) return Fail(watch_.Message());
  }
  return RunEnd::Interrupted;
}

RunEnd TSpoolLoop::EndOf(int status)
{
  if (status == static_cast<int>(RC_IDLE)) {
    if (delivered_ >= settings_.wantedImages) return RunEnd::Complete;
    return Fail("the run ended after " + std::to_string(delivered_) + " images, before all were there");
  }
  // A camera that lost some of the frames asked for sends no others in their place.
  const bool isExplainedByLoss = delivered_ + account_.LostInCameraSoFar() == settings_.wantedImages;
  if (status == static_cast<int>(RC_STATUS_TIMED_OUT) && isExplainedByLoss) return RunEnd::Complete;
  Fail(ResultText("GetStatus", static_cast<unsigned int>(status)));
  return status == static_cast<int>(RC_STATUS_SPOOL_ISSUE) ? RunEnd::OutputFailed : RunEnd::CameraFailed;
}

RunEnd TSpoolLoop::Fail(const std::string& message)
{
  message_ = message;
  return RunEnd::CameraFailed;
}

void TSpoolLoop::Look()
{
  const long before = delivered_;
  camera_.TotalImages(delivered_);
  if (delivered_ > before) watch_.Arrived();
  watch_.ReadTimestamps(account_, delivered_);
}

void TSpoolLoop::Finish(long written)
{
  Look();
  for (long image = 0; image < delivered_; ++image) account_.EnterFetched(image < written);
  account_.Finish(delivered_);
}

void TSpoolLoop::Report()
{
  TProgress progress;
  progress.seconds = watch_.Seconds();
  progress.delivered = progress.fetched = delivered_;
  progress.wanted = settings_.wantedImages;
  progress.lost = account_.LostInCameraSoFar();
  progress.imageBytes = settings_.shape.Bytes();
  onProgress_(progress);
}

} // namespace vxtool
