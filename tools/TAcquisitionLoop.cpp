// SPDX-License-Identifier: MIT
// The acquisition loop.
#include "tools/TAcquisitionLoop.h"

#include "tools/ResultText.h"
#include "vxmcd.h"

#include <algorithm>
#include <utility>

namespace vxtool {

namespace {

constexpr std::chrono::milliseconds kDrainAfterInterrupt{300};
constexpr long kMaxRingSlots = 5000;
constexpr long kSkipPart =
    8; // after falling behind, go on this part of the ring ahead of the camera, and a bit more

} // namespace

TAcquisitionLoop::TAcquisitionLoop(ICamera& camera, IImageWriter* writer, const TLoopSettings& settings,
                                   std::function<bool()> isInterrupted,
                                   std::function<void(const TProgress&)> onProgress)
    : camera_(camera),
      writer_(writer),
      settings_(settings),
      isInterrupted_(std::move(isInterrupted)),
      onProgress_(std::move(onProgress)),
      account_(settings.isPaced),
      watch_(camera, settings),
      fetched_(settings.shape.Bytes())
{
}

RunEnd TAcquisitionLoop::Run()
{
  if (!watch_.Start()) {
    Fail(watch_.Message());
    if (!settings_.isEndless && settings_.wantedImages > 1)
      message_ += "; a series must fit into memory, --mode continuous takes any number of images";
    return end_;
  }
  RunEnd end = RunStarted();
  seconds_ = watch_.Seconds();

  if (!watch_.Stop() && end == RunEnd::Complete) end = Fail(watch_.Message());
  // What came until the stop is taken along, as long as it is wanted.
  if (end != RunEnd::OutputFailed && !Drain(Clock::now() + kDrainAfterInterrupt)) end = end_;
  long delivered = account_.LastImage();
  camera_.TotalImages(delivered);
  watch_.ReadTimestamps(account_, delivered);
  account_.Finish(delivered);
  return IsExplainedByLoss() ? RunEnd::Complete : end;
}

bool TAcquisitionLoop::IsExplainedByLoss() const
{
  // A camera that was asked for a number of frames and lost some of them sends no others in their place: the
  // library waits for these until its time is out. That is a run with lost frames, not a broken camera.
  const TRunTotals& totals = account_.Totals();
  return endStatus_ == static_cast<int>(RC_STATUS_TIMED_OUT) && !settings_.isEndless && totals.notFetched == 0 &&
         totals.Produced() == settings_.wantedImages;
}

RunEnd TAcquisitionLoop::RunStarted()
{
  while (!IsDone()) {
    if (isInterrupted_()) return RunEnd::Interrupted;
    int status = 0;
    if (!watch_.Turn(status)) return Fail(watch_.Message());
    if (!Drain(Clock::time_point::max())) return end_;
    Report();
    if (IsDone()) break;
    if (status != static_cast<int>(RC_ACQUIRING)) return FailedStatus(status);
    if (watch_.IsTooLate()) return Fail(watch_.Message());
  }
  return RunEnd::Complete;
}

bool TAcquisitionLoop::IsDone() const
{
  return settings_.wantedImages > 0 && account_.Fetched() >= settings_.wantedImages;
}

RunEnd TAcquisitionLoop::Fail(const std::string& message)
{
  message_ = message;
  return end_ = RunEnd::CameraFailed;
}

RunEnd TAcquisitionLoop::FailedStatus(int status)
{
  endStatus_ = status;
  if (status != static_cast<int>(RC_IDLE)) return Fail(ResultText("GetStatus", static_cast<unsigned int>(status)));
  return Fail("the run ended after " + std::to_string(newest_) + " images, before all were there");
}

bool TAcquisitionLoop::Drain(Clock::time_point deadline)
{
  while (!IsDone()) {
    int first = 0;
    int last = 0;
    const unsigned int code = camera_.AvailableImages(first, last);
    if (code == RC_NO_NEW_DATA) return true;
    if (code != RC_SUCCESS) {
      Fail(ResultText("GetNumberAvailableImages", code));
      return false;
    }
    if (last > newest_) watch_.Arrived();
    arrivedInTurn_ = last - newest_;
    newest_ = last;
    SkipOverwritten(first, last);
    const long number = account_.LastImage() + 1;
    if (number > last || Clock::now() > deadline) return true;
    if (!TakeImage(number)) return false;
    if (isInterrupted_() && deadline == Clock::time_point::max()) return true;
    Report();
  }
  return true;
}

void TAcquisitionLoop::SkipOverwritten(int first, int last)
{
  if (!settings_.isEndless || first <= 1) return;
  isRingFull_ = true;
  ringSlots_ = last + 1L - first;
  const long next = account_.LastImage() + 1;
  if (next > first) return;
  // The oldest image is the one whose buffer the camera fills now; directly behind it the next copy would be
  // overtaken.
  const long goOnAt = std::min(first + 1L + ringSlots_ / kSkipPart + 2L * arrivedInTurn_, last + 1L);
  account_.EnterOverwritten(goOnAt - next);
}

bool TAcquisitionLoop::TakeImage(long number)
{
  TImageLabel label;
  label.number = number;
  long long ticks = 0;
  const unsigned int code = camera_.FetchImage(number, settings_.shape.depth, fetched_, ticks);
  if (code != RC_SUCCESS && code != RC_NO_NEW_DATA) {
    Fail(ResultText("vxmcd_GetIntactImage", code));
    if (code == RC_P3_INVALID)
      message_ = "the images are not " + std::to_string(settings_.shape.width) + "x" +
                 std::to_string(settings_.shape.height) + " pixels: the camera did not take the image area (" +
                 message_ + ")";
    return false;
  }
  if (code == RC_NO_NEW_DATA) {
    account_.EnterOverwritten(1);
    return true;
  }
  if (ticks != 0 || (number == 1 && StartsAtZero())) label.ticks = ticks;
  watch_.ReadTimestamps(account_, number);
  const bool isWritten = writer_ && writer_->Write(fetched_, label);
  account_.EnterFetched(isWritten);
  lastImage_.resize(fetched_.size());
  lastImage_.swap(fetched_);
  lastLabel_ = label;
  if (isWritten || !writer_) return true;
  message_ = writer_->Error();
  end_ = RunEnd::OutputFailed;
  return false;
}

// Whether the 0 of the first image is its clock value, and does not stand for none.
bool TAcquisitionLoop::StartsAtZero() const
{
  long long ticks = -1;
  return camera_.Timestamp(1, ticks) == RC_SUCCESS && ticks == 0;
}

void TAcquisitionLoop::Report()
{
  TProgress progress;
  progress.seconds = watch_.Seconds();
  progress.delivered = newest_;
  progress.fetched = account_.Fetched();
  progress.wanted = settings_.wantedImages;
  progress.lost = account_.Overwritten() + account_.LostInCameraSoFar();
  progress.imageBytes = settings_.shape.Bytes();
  const double waiting = static_cast<double>(newest_ - account_.LastImage());
  const double slots = isRingFull_
                           ? static_cast<double>(ringSlots_)
                           : static_cast<double>(settings_.ringBytes) / static_cast<double>(progress.imageBytes);
  progress.ringFill = std::clamp(waiting / std::clamp(slots, 1.0, static_cast<double>(kMaxRingSlots)), 0.0, 1.0);
  onProgress_(progress);
}

} // namespace vxtool
