// SPDX-License-Identifier: MIT
// Asks, copies, writes, and stays ahead of the camera where the ring is full.
#include "tools/TImageFetcher.h"

#include "runs/host_time.h"
#include "tools/Messages.h"
#include "vxmcd.h"

#include <algorithm>

namespace vxtool {

namespace {

constexpr long kMaxRingSlots = 5000;
constexpr long kSkipPart =
    8; // after falling behind, go on this part of the ring ahead of the camera, and a bit more

} // namespace

TImageFetcher::TImageFetcher(ICamera& camera, IImageWriter* writer, const TRunSettings& settings,
                             TFrameStatistics& statistics)
    : camera_(camera),
      writer_(writer),
      settings_(settings),
      statistics_(statistics),
      fetched_(settings.shape.Bytes())
{
  if (settings.areSums && settings.shape.depth != PixelDepth::Bits32)
    sums_.resize(settings.shape.Pixels() * sizeof(std::int32_t));
}

bool TImageFetcher::Fail(const char* function, unsigned int code)
{
  error_ = ResultText(function, code);
  return false;
}

bool TImageFetcher::Look()
{
  int first = 0;
  int last = 0;
  const unsigned int code = camera_.AvailableImages(first, last);
  isNextThere_ = false;
  if (code == RC_NO_NEW_DATA) return true;
  if (code != RC_SUCCESS) return Fail("GetNumberAvailableImages", code);
  NoteArrivals(last);
  arrivedInTurn_ = last - newest_;
  newest_ = last;
  SkipOverwritten(first, last);
  isNextThere_ = statistics_.LastImage() < last;
  return true;
}

void TImageFetcher::NoteArrivals(int last)
{
  if (last > newest_) arrivals_.insert(arrivals_.end(), static_cast<std::size_t>(last - newest_), HostTimeNs());
}

void TImageFetcher::SkipOverwritten(int first, int last)
{
  if (!settings_.isEndless || first <= 1) return;
  ringSlots_ = last + 1L - first;
  const long next = statistics_.LastImage() + 1;
  if (next > first) return;
  // The oldest image is the one whose buffer the camera fills now; directly behind it the next copy would be
  // overtaken.
  const long goOnAt = std::min(first + 1L + ringSlots_ / kSkipPart + 2L * arrivedInTurn_, last + 1L);
  statistics_.AddOverwritten(goOnAt - next);
}

bool TImageFetcher::TakeNext()
{
  const long number = statistics_.LastImage() + 1;
  TImageLabel label;
  label.number = settings_.imagesBefore + number;
  const auto waiting = static_cast<std::size_t>(std::max(0L, newest_ + 1 - number));
  while (arrivals_.size() > waiting) arrivals_.pop_front();
  if (!arrivals_.empty()) label.hostNanoseconds = arrivals_.front();
  long long ticks = 0;
  const unsigned int code = Fetch(number, ticks);
  if (code == RC_NO_NEW_DATA) {
    statistics_.AddOverwritten(1);
    return true;
  }
  if (code != RC_SUCCESS) {
    Fail("vxmcd_GetIntactImage", code);
    if (code == RC_P3_INVALID)
      error_ = "the images are not " + std::to_string(settings_.shape.width) + "x" +
               std::to_string(settings_.shape.height) + " pixels: the camera did not take the image area (" +
               error_ + ")";
    return false;
  }
  if (ticks != 0 || (number == 1 && StartsAtZero())) label.ticks = ticks;
  const bool isWritten = writer_ && writer_->Write(fetched_, label);
  statistics_.AddFetched(isWritten);
  lastImage_.resize(fetched_.size());
  lastImage_.swap(fetched_);
  lastLabel_ = label;
  if (isWritten || !writer_) return true;
  error_ = writer_->Error();
  isOutputFailed_ = true;
  return false;
}

unsigned int TImageFetcher::Fetch(long number, long long& ticks)
{
  const TImageShape& shape = settings_.shape;
  if (sums_.empty()) return camera_.FetchImage(number, shape.depth, fetched_, ticks);
  const unsigned int code = camera_.FetchImage(number, PixelDepth::Bits32, sums_, ticks);
  if (code != RC_SUCCESS) return code;
  const std::int64_t stride = RowBytes(RunFormat::Encoding::kMono32, shape.width);
  const long clipped =
      DecodeFrame(sums_, {RunFormat::Encoding::kMono32, shape.width, shape.height, stride}, shape.depth, fetched_);
  if (clipped > 0) statistics_.AddClipped(clipped, 1);
  return code;
}

// Whether the 0 of the first image is its clock value; it may also mean that there is none.
bool TImageFetcher::StartsAtZero() const
{
  long long ticks = -1;
  return camera_.Timestamp(1, ticks) == RC_SUCCESS && ticks == 0;
}

double TImageFetcher::RingFill() const
{
  const double waiting = static_cast<double>(newest_ - statistics_.LastImage());
  const double slots =
      ringSlots_ > 0 ? static_cast<double>(ringSlots_)
                     : static_cast<double>(settings_.ringBytes) / static_cast<double>(settings_.shape.Bytes());
  return std::clamp(waiting / std::clamp(slots, 1.0, static_cast<double>(kMaxRingSlots)), 0.0, 1.0);
}

} // namespace vxtool
