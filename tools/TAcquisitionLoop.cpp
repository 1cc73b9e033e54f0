// SPDX-License-Identifier: MIT
// The acquisition loop and its test for images that may have been overwritten.
#include "tools/TAcquisitionLoop.h"

#include "tools/ResultText.h"
#include "vxmcd.h"

#include <algorithm>
#include <utility>

namespace vxtool {

namespace {

constexpr std::chrono::milliseconds kDrainAfterInterrupt{300};
constexpr long kMostRingSlots = 5000;
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
  // The camera's own frame size is not known here: 4 bytes a pixel and a quarter for padding is more than any has.
  const long mostFrameBytes = static_cast<long>(settings.shape.Pixels()) * 5 + 65536;
  ringSlots_ = std::clamp(settings.ringBytes / mostFrameBytes, 1L, kMostRingSlots);
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
  const unsigned int code = camera_.FetchImage(number, settings_.shape.depth, fetched_);
  if (code != RC_SUCCESS && code != RC_NO_NEW_DATA) {
    Fail(ResultText("GetImages", code));
    if (code == RC_P4_INVALID)
      message_ = "the images are not " + std::to_string(settings_.shape.width) + "x" +
                 std::to_string(settings_.shape.height) + " pixels: the camera did not take the image area (" +
                 message_ + ")";
    return false;
  }
  if (code == RC_NO_NEW_DATA || !IsIntact(number)) {
    account_.EnterOverwritten(1);
    return true;
  }
  const TImageLabel label = Label(number);
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

bool TAcquisitionLoop::IsIntact(long number) const
{
  if (!settings_.isEndless) return true;
  int first = 0;
  int last = 0;
  if (camera_.AvailableImages(first, last) != RC_SUCCESS) return false;
  // Image `first` shares its buffer with the image that the camera is filling now, once the ring is full.
  return first > 1 ? number > first : number > 1 || last < ringSlots_;
}

TImageLabel TAcquisitionLoop::Label(long number)
{
  TImageLabel label;
  label.number = number;
  unsigned int count = 0;
  long long ticks = 0;
  watch_.ReadTimestamps(account_, number - 1);
  if (camera_.Timestamp(number, count, ticks) != RC_SUCCESS) return label;
  if (account_.TimestampsRead() == number - 1) account_.Timestamp(ticks);
  // Timestamps are numbered among themselves: one that is missing moves all later ones to the image before.
  if (static_cast<long>(count) >= newest_) label.ticks = ticks;
  return label;
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
  progress.ringFill = std::clamp(waiting / std::clamp(slots, 1.0, static_cast<double>(kMostRingSlots)), 0.0, 1.0);
  onProgress_(progress);
}

} // namespace vxtool
