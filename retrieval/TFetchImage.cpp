// SPDX-License-Identifier: MIT
// Takes frames out of a dispatch queue into dense arrays of the caller's pixel type.
#include "retrieval/TFetchImage.h"

#include "acquisition/TDispatchQueue.h"
#include "retrieval/TAcquiredImage.h"
#include "trace/trace_switch.h"
#include "utility/outputs.h"
#include "utility/TCallNotes.h"
#include "vxmcd_result_codes.h"

#include <algorithm>
#include <limits>

namespace {

// The cursor of GetNextOldestImage() is an int; images above its range do not exist for it.
constexpr std::int64_t kMaxCursor = std::numeric_limits<int>::max();
constexpr std::int64_t kMaxPixels = std::numeric_limits<int>::max();
constexpr std::int64_t kMaxRowBytes = std::numeric_limits<unsigned int>::max();
constexpr int kMostRecentTries = 3;

} // namespace

template <class Src, class Dst>
TFetchImage<Src, Dst>::TFetchImage(TDispatchQueue* queue, int width, int height, int strideBytes)
    : dispatchQueue_(queue),
      width_(width),
      height_(height),
      stride_(strideBytes),
      runNumber_(runNumber()),
      imageSizeBytes_(queue ? queue->GetImageSizeBytes() : 0)
{
}

template <class Src, class Dst>
TFetchImage<Src, Dst>::~TFetchImage() = default;

template <class Src, class Dst>
std::int64_t TFetchImage<Src, Dst>::sourceRowBytes(std::int64_t pixelCount) const
{
  return pixelCount * static_cast<std::int64_t>(sizeof(Src));
}

template <class Src, class Dst>
std::uint64_t TFetchImage<Src, Dst>::runNumber() const
{
  return dispatchQueue_ ? dispatchQueue_->RunNumber() : 0;
}

template <class Src, class Dst>
std::int64_t TFetchImage<Src, Dst>::newestImage() const
{
  return dispatchQueue_ ? dispatchQueue_->GetMaximumImageAvailable() : 0;
}

template <class Src, class Dst>
std::int64_t TFetchImage<Src, Dst>::oldestImage() const
{
  return dispatchQueue_ ? dispatchQueue_->GetMinimumImageAvailable() : 0;
}

template <class Src, class Dst>
std::int64_t TFetchImage<Src, Dst>::pixelsPerFrame() const
{
  return std::int64_t{width_} * height_;
}

template <class Src, class Dst>
bool TFetchImage<Src, Dst>::isFrameSize(unsigned long size) const
{
  // Callers rely on the comparison with a product of 32 bits.
  const int pixelCount = static_cast<int>(static_cast<unsigned int>(width_) * static_cast<unsigned int>(height_));
  if (size == static_cast<unsigned long>(static_cast<long>(pixelCount))) return true;
  TCallNotes::AddDetail("an image has %d x %d pixels", width_, height_);
  return false;
}

template <class Src, class Dst>
bool TFetchImage<Src, Dst>::fitsStoredFrame() const
{
  if (!dispatchQueue_ || width_ < 1 || height_ < 1 || stride_ < 1) return false;
  if (pixelsPerFrame() > kMaxPixels) return false;
  if (std::int64_t{width_} * static_cast<std::int64_t>(sizeof(Dst)) > kMaxRowBytes) return false;
  const std::int64_t lastRowStart = std::int64_t{height_ - 1} * stride_;
  if (lastRowStart + sourceRowBytes(width_) <= imageSizeBytes_) return true;
  TCallNotes::AddFailure("no image of %d x %d pixels, the camera's present area, can be in a frame of %lld bytes",
                         width_, height_, static_cast<long long>(imageSizeBytes_));
  return false;
}

// Whether the frame reads the same when it is taken as one long row: there is no padding, and packed rows do not
// end in half a group.
template <class Src, class Dst>
bool TFetchImage<Src, Dst>::rowsAreAdjacent() const
{
  return sourceRowBytes(pixelsPerFrame()) == std::int64_t{height_} * stride_;
}

template <class Src, class Dst>
unsigned int TFetchImage<Src, Dst>::copyImageByLine(Dst* destination, unsigned char* frame)
{
  if (!fitsStoredFrame()) return RC_COPY_REFUSED;

  const auto rowCount = static_cast<unsigned int>(height_);
  const auto sourceBytes = static_cast<unsigned int>(stride_);
  const auto targetBytes = static_cast<unsigned int>(static_cast<std::size_t>(width_) * sizeof(Dst));
  sourceLines_.emplace(sourceBytes, rowCount);
  destinationLines_.emplace(targetBytes, rowCount);
  unsigned char* source = sourceLines_->firstLineWithin(frame, std::uint64_t{rowCount} * sourceBytes);
  unsigned char* target = destinationLines_->firstLineWithin(reinterpret_cast<unsigned char*>(destination),
                                                             std::uint64_t{rowCount} * targetBytes);
  const bool refused = !source || !target;
  if (!refused && rowsAreAdjacent()) {
    copyImage(destination, source, static_cast<int>(pixelsPerFrame()));
  } else {
    while (source && target) {
      copyImage(reinterpret_cast<Dst*>(target), source, width_);
      source = sourceLines_->GetNextLine();
      target = destinationLines_->GetNextLine();
    }
  }
  sourceLines_.reset();
  destinationLines_.reset();
  return refused ? RC_COPY_REFUSED : RC_SUCCESS;
}

// Another thread may start a run with other frames at any moment: the size is that of this frame.
template <class Src, class Dst>
unsigned int TFetchImage<Src, Dst>::copyAcquiredImage(Dst* destination, const TAcquiredImage& image)
{
  imageSizeBytes_ = image.Memory().sizeBytes;
  return copyImageByLine(destination, image.Memory().bytes);
}

template <class Src, class Dst>
void TFetchImage<Src, Dst>::noteCopy(const Dst* destination) const
{
  Trace::NoteCopiedPixels(destination, static_cast<std::uint64_t>(pixelsPerFrame()) * sizeof(Dst));
}

// A refused copy changes nothing for the callers of the operations below. A position is computed for a frame that
// fits only: others may have any number of pixels.
template <class Src, class Dst>
void TFetchImage<Src, Dst>::copyToPosition(Dst* destination, std::int64_t position, const TAcquiredImage& image)
{
  imageSizeBytes_ = image.Memory().sizeBytes;
  if (!fitsStoredFrame()) return;
  Dst* const place = destination + position * pixelsPerFrame();
  if (copyAcquiredImage(place, image) == RC_SUCCESS) noteCopy(place);
}

template <class Src, class Dst>
unsigned int TFetchImage<Src, Dst>::GetNextOldestImage(Dst* destination, unsigned long size, int& lastIndex)
{
  const unsigned int code = MoveToNextOldestImage(destination, size, lastIndex);
  if (code == RC_SUCCESS) CopyImage(destination, lastIndex);
  return code;
}

template <class Src, class Dst>
unsigned int TFetchImage<Src, Dst>::MoveToNextOldestImage(const Dst* destination, unsigned long size,
                                                          int& lastIndex)
{
  if (!destination) return RC_P1_INVALID;
  if (!isFrameSize(size)) return RC_P2_INVALID;
  if (lastIndex >= std::min(newestImage(), kMaxCursor)) return RC_NO_NEW_DATA;

  const std::int64_t next = std::max(std::int64_t{lastIndex} + 1, oldestImage());
  lastIndex = static_cast<int>(std::min(next, kMaxCursor));
  return RC_SUCCESS;
}

template <class Src, class Dst>
void TFetchImage<Src, Dst>::CopyImage(Dst* destination, int number)
{
  const TAcquiredImage image(*dispatchQueue_, number);
  if (image && copyAcquiredImage(destination, image) == RC_SUCCESS) noteCopy(destination);
}

template <class Src, class Dst>
unsigned int TFetchImage<Src, Dst>::GetAcquiredData(Dst* destination, unsigned long size)
{
  if (!destination) return RC_P1_INVALID;
  if (!isFrameSize(size)) return RC_P2_INVALID;
  if (newestImage() < 1) return RC_NO_NEW_DATA;

  // Frames that were overwritten keep their place in the output. The newest number is read again each time, so that
  // frames that arrive meanwhile are included; but not those of another run, whose number changes before they come.
  for (std::int64_t number = std::max<std::int64_t>(oldestImage(), 1); number <= newestImage(); ++number) {
    if (runNumber() != runNumber_) return RC_ACQUIRING;
    const TAcquiredImage image(*dispatchQueue_, number);
    if (image) copyToPosition(destination, number - 1, image);
  }
  return RC_SUCCESS;
}

template <class Src, class Dst>
unsigned int TFetchImage<Src, Dst>::GetMostRecentImage(Dst* destination, unsigned long size)
{
  if (!destination) return RC_P1_INVALID;
  if (!isFrameSize(size)) return RC_P2_INVALID;
  if (newestImage() < 1) return RC_NO_NEW_DATA;

  bool found = false;
  bool copied = false;
  for (int attempt = 0; attempt < kMostRecentTries; ++attempt) {
    const TAcquiredImage image(*dispatchQueue_, newestImage());
    if (!image) continue;
    copied = copyAcquiredImage(destination, image) == RC_SUCCESS;
    found = true;
    if (!copied || image.IsIntact()) break;
  }
  if (copied) noteCopy(destination);
  return found ? RC_SUCCESS : RC_FRAME_UNAVAILABLE;
}

template <class Src, class Dst>
unsigned int TFetchImage<Src, Dst>::GetIntactImage(long number, Dst* destination, unsigned long size,
                                                   long long* ticks)
{
  WriteOutput(ticks, 0);
  if (number < 1) return RC_P1_INVALID;
  if (!destination) return RC_P2_INVALID;
  if (!isFrameSize(size)) return RC_P3_INVALID;
  if (!dispatchQueue_) return RC_NO_NEW_DATA;

  const TAcquiredImage image(*dispatchQueue_, number);
  // One that is lost already need not be copied.
  if (!image || !image.IsIntact()) return RC_NO_NEW_DATA;
  const std::optional<std::int64_t> clock = dispatchQueue_->GetImageTicks(number);
  if (copyAcquiredImage(destination, image) != RC_SUCCESS || !image.IsIntact()) return RC_NO_NEW_DATA;
  noteCopy(destination);
  WriteOutput(ticks, clock.value_or(0));
  return RC_SUCCESS;
}

template <class Src, class Dst>
unsigned int TFetchImage<Src, Dst>::GetImages(long first, long last, Dst* destination, unsigned long size,
                                              long* validFirst, long* validLast)
{
  WriteOutput(validFirst, 0);
  WriteOutput(validLast, 0);
  if (!destination) return RC_P3_INVALID;
  if (!isFrameSize(size)) return RC_P4_INVALID;
  if (first < 1) return RC_P1_INVALID;
  if (first > last) return RC_P2_INVALID;

  long firstFound = 0;
  const std::int64_t end = std::min(std::int64_t{last}, newestImage());
  for (std::int64_t number = std::max(std::int64_t{first}, oldestImage()); number <= end; ++number) {
    const TAcquiredImage image(*dispatchQueue_, number);
    if (!image) continue;
    if (firstFound == 0) {
      firstFound = static_cast<long>(number);
      WriteOutput(validFirst, firstFound);
      copyToPosition(destination, number - first, image);
    }
    WriteOutput(validLast, number);
  }
  return firstFound == 0 ? RC_NO_NEW_DATA : RC_SUCCESS;
}

template class TFetchImage<unsigned char, unsigned char>;
template class TFetchImage<unsigned char, unsigned short>;
template class TFetchImage<unsigned char, int>;
template class TFetchImage<unsigned short, unsigned short>;
template class TFetchImage<unsigned short, int>;
template class TFetchImage<int, unsigned short>;
template class TFetchImage<int, int>;
