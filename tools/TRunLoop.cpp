// SPDX-License-Identifier: MIT
// Start, trigger, wait, status, images, stop.
#include "tools/TRunLoop.h"

#include "tools/Messages.h"
#include "vxmcd.h"

#include <algorithm>
#include <utility>

namespace vxtool {

namespace {

constexpr std::chrono::milliseconds kWaitSlice{100};
constexpr std::chrono::milliseconds kDrainAfterStop{300};

} // namespace

TRunLoop::TRunLoop(ICamera& camera, IImageWriter* writer, const TRunSettings& settings,
                   std::function<bool()> isInterrupted, std::function<void(const TProgress&)> onProgress)
    : camera_(camera),
      settings_(settings),
      isInterrupted_(std::move(isInterrupted)),
      onProgress_(std::move(onProgress)),
      statistics_(settings.hasSteadyRate),
      trigger_(camera, settings.triggerSeconds, settings.imageSeconds)
{
  if (!settings.isRecorded) fetcher_.emplace(camera, writer, settings, statistics_);
}

bool TRunLoop::Fail(const std::string& message, RunEnd end)
{
  message_ = message;
  end_ = end;
  return false;
}

RunEnd TRunLoop::Run()
{
  if (!Start()) return end_;
  RunEnd end = RunStarted();
  seconds_ = SecondsSinceStart();

  const unsigned int stopped = Stop();
  if (stopped != RC_SUCCESS && end == RunEnd::Complete) {
    Fail(ResultText("AbortAcquisition", stopped));
    end = end_;
  }
  if (!fetcher_) {
    CountDelivered(); // frames that came until then
    seconds_ = SecondsSinceStart();
    return end;
  }
  // What came until the stop is taken along, as long as it is wanted.
  if (end != RunEnd::OutputFailed && !TakeImages(Clock::now() + kDrainAfterStop)) end = end_;
  delivered_ = statistics_.LastImage();
  camera_.TotalImages(delivered_);
  ReadTimestamps(delivered_);
  statistics_.Finish(delivered_, camera_.LostFrames());
  return IsExplainedByLoss() ? RunEnd::Complete : end;
}

bool TRunLoop::Start()
{
  start_ = lastArrival_ = Clock::now();
  const unsigned int code = camera_.Start();
  if (code == RC_SUCCESS) return true;
  const bool isSeries = fetcher_ && !settings_.isEndless && settings_.wantedImages > 1;
  return Fail(ResultText("StartAcquisition", code) +
              (isSeries ? "; a series must fit into memory, --mode continuous takes any number of images" : ""));
}

RunEnd TRunLoop::RunStarted()
{
  while (!IsDone()) {
    if (isInterrupted_()) return RunEnd::Interrupted;
    int status = 0;
    if (!WaitForImage(status) || !TakeImages(Clock::time_point::max())) return end_;
    Report();
    if (IsDone()) break;
    if (status != static_cast<int>(RC_ACQUIRING)) return EndOf(status);
    // A recorded run whose images are all there ends when they are on the disk.
    if ((fetcher_ || delivered_ < settings_.wantedImages) && IsTooLate()) return end_;
  }
  return RunEnd::Complete;
}

bool TRunLoop::WaitForImage(int& status)
{
  std::chrono::milliseconds wait = kWaitSlice;
  if (settings_.isSoftwareTriggered) {
    const auto untilNext = trigger_.SendWhenDue(lastArrival_) - Clock::now();
    wait =
        std::clamp(std::chrono::floor<std::chrono::milliseconds>(untilNext), std::chrono::milliseconds(0), wait);
  }
  const unsigned int waited = camera_.Wait(static_cast<int>(wait.count()));
  if (waited != RC_SUCCESS && waited != RC_NO_NEW_DATA)
    return Fail(ResultText("WaitForAcquisitionByHandleTimeOut", waited));
  const unsigned int code = camera_.Status(status);
  return code == RC_SUCCESS || Fail(ResultText("GetStatus", code));
}

bool TRunLoop::TakeImages(Clock::time_point deadline)
{
  if (!fetcher_) {
    CountDelivered();
    return true;
  }
  while (!IsDone()) {
    const long before = fetcher_->Newest();
    if (!fetcher_->Look()) return Fail(fetcher_->Error());
    delivered_ = fetcher_->Newest();
    if (delivered_ > before) lastArrival_ = Clock::now();
    if (!fetcher_->HasNext() || Clock::now() > deadline) return true;
    const bool isTaken = fetcher_->TakeNext();
    ReadTimestamps(statistics_.LastImage());
    if (!isTaken)
      return Fail(fetcher_->Error(), fetcher_->IsOutputFailed() ? RunEnd::OutputFailed : RunEnd::CameraFailed);
    if (isInterrupted_() && deadline == Clock::time_point::max()) return true;
    Report();
  }
  return true;
}

void TRunLoop::CountDelivered()
{
  const long before = delivered_;
  camera_.TotalImages(delivered_);
  if (delivered_ > before) lastArrival_ = Clock::now();
  ReadTimestamps(delivered_);
}

void TRunLoop::ReadTimestamps(long last)
{
  for (long next = statistics_.Timestamps() + 1; next <= last; ++next) {
    long long ticks = 0;
    if (camera_.Timestamp(next, ticks) != RC_SUCCESS) return;
    statistics_.AddTimestamp(ticks);
  }
}

bool TRunLoop::IsDone() const
{
  return fetcher_ && settings_.wantedImages > 0 && statistics_.Fetched() >= settings_.wantedImages;
}

bool TRunLoop::IsTooLate()
{
  const std::chrono::duration<double> waiting = Clock::now() - lastArrival_;
  if (settings_.noImageSeconds <= 0.0 || waiting.count() <= settings_.noImageSeconds) return false;
  Fail("no image within the time limit; check the trigger source or raise --timeout");
  return true;
}

RunEnd TRunLoop::EndOf(int status)
{
  endStatus_ = status;
  if (status == static_cast<int>(RC_IDLE)) {
    // Only an interrupt leaves images that are there.
    const bool isWhole = settings_.wantedImages > 0 && delivered_ >= settings_.wantedImages;
    if (isWhole) return fetcher_ ? RunEnd::Interrupted : RunEnd::Complete;
    Fail("the run ended after " + std::to_string(delivered_) + " images, before all were there");
    return end_;
  }
  if (!fetcher_ && IsExplainedByLoss()) return RunEnd::Complete;
  const bool isDiskFailure = status == static_cast<int>(RC_STATUS_SPOOL_ISSUE);
  Fail(ResultText("GetStatus", static_cast<unsigned int>(status)),
       isDiskFailure ? RunEnd::OutputFailed : RunEnd::CameraFailed);
  return end_;
}

bool TRunLoop::IsExplainedByLoss() const
{
  // A camera that loses some of the requested frames sends no others in their place: the library waits for them
  // until its time limit. That is a run with lost frames, not a broken camera.
  if (endStatus_ != static_cast<int>(RC_STATUS_TIMED_OUT) || settings_.isEndless) return false;
  if (!fetcher_) return delivered_ + statistics_.LostInCameraSoFar() == settings_.wantedImages;
  const TFrameCounts& counts = statistics_.Counts();
  return counts.notFetched == 0 && counts.Produced() == settings_.wantedImages;
}

unsigned int TRunLoop::Stop()
{
  int status = 0;
  if (camera_.Status(status) != RC_SUCCESS || status != static_cast<int>(RC_ACQUIRING)) return RC_SUCCESS;
  const unsigned int code = camera_.Abort();
  return code == RC_IDLE ? static_cast<unsigned int>(RC_SUCCESS) : code;
}

void TRunLoop::FinishRecorded(long written)
{
  CountDelivered();
  for (long image = 0; image < delivered_; ++image) statistics_.AddFetched(image < written);
  statistics_.Finish(delivered_, camera_.LostFrames());
}

void TRunLoop::Report()
{
  TProgress progress;
  progress.seconds = SecondsSinceStart();
  progress.delivered = delivered_;
  progress.fetched = fetcher_ ? statistics_.Fetched() : delivered_;
  progress.wanted = settings_.wantedImages;
  progress.lost = statistics_.Overwritten() + statistics_.LostInCameraSoFar();
  progress.imageBytes = settings_.shape.Bytes();
  if (fetcher_) progress.ringFill = fetcher_->RingFill();
  progress.imageSeconds = delivered_ == 0 ? settings_.firstImageSeconds : settings_.nextImageSeconds;
  const std::chrono::duration<double> waiting = Clock::now() - lastArrival_;
  progress.untilImageSeconds = std::max(0.0, progress.imageSeconds - waiting.count());
  onProgress_(progress);
}

} // namespace vxtool
