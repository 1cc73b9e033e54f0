// SPDX-License-Identifier: MIT
// Takes frames out of a dispatch queue into dense arrays of the caller's pixel type.
#include "retrieval/TFetchImage.h"

#include "acquisition/TDispatchQueue.h"
#include "retrieval/THeldImage.h"
#include "vxmcd_result_codes.h"

#include <algorithm>
#include <limits>

namespace {

// Frames are taken by an int; what lies above cannot be asked for and counts as not there.
constexpr std::int64_t kHighestNumber = std::numeric_limits<int>::max();
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
  return size == static_cast<unsigned long>(static_cast<long>(pixelCount));
}

template <class Src, class Dst>
bool TFetchImage<Src, Dst>::fitsStoredFrame() const
{
  if (!dispatchQueue_ || width_ < 1 || height_ < 1 || stride_ < 1) return false;
  if (pixelsPerFrame() > kMaxPixels) return false;
  if (std::int64_t{width_} * static_cast<std::int64_t>(sizeof(Dst)) > kMaxRowBytes) return false;
  const std::int64_t lastRowStart = std::int64_t{height_ - 1} * stride_;
  // Another thread may start a run with other frames at any moment. A frame that is held now belongs to the run of
  // before or of now, and fits if it would in both.
  const std::int64_t imageSizeBytes = std::min(imageSizeBytes_, dispatchQueue_->GetImageSizeBytes());
  return lastRowStart + sourceRowBytes(width_) <= imageSizeBytes;
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

// A refused copy changes nothing for the callers of the operations below.
template <class Src, class Dst>
void TFetchImage<Src, Dst>::copyToPosition(Dst* destination, std::int64_t position, unsigned char* frame)
{
  if (fitsStoredFrame()) copyImageByLine(destination + position * pixelsPerFrame(), frame);
}

template <class Src, class Dst>
unsigned int TFetchImage<Src, Dst>::GetNextOldestImage(Dst* destination, unsigned long size, int& lastIndex)
{
  if (!destination) return RC_P1_INVALID;
  if (!isFrameSize(size)) return RC_P2_INVALID;
  if (lastIndex >= std::min(newestImage(), kHighestNumber)) return RC_NO_NEW_DATA;

  const std::int64_t next = std::max(std::int64_t{lastIndex} + 1, oldestImage());
  lastIndex = static_cast<int>(std::min(next, kHighestNumber));
  if (next > kHighestNumber) return RC_SUCCESS;
  const THeldImage image(*dispatchQueue_, lastIndex);
  if (image.get()) copyImageByLine(destination, image.get());
  return RC_SUCCESS;
}

template <class Src, class Dst>
unsigned int TFetchImage<Src, Dst>::GetAcquiredData(Dst* destination, unsigned long size)
{
  if (!destination) return RC_P1_INVALID;
  if (!isFrameSize(size)) return RC_P2_INVALID;
  if (newestImage() < 1) return RC_NO_NEW_DATA;

  // Frames that are gone keep their place in the output. The newest is asked for again each time, so that frames
  // that arrive meanwhile are included.
  for (std::int64_t number = std::max<std::int64_t>(oldestImage(), 1);
       number <= std::min(newestImage(), kHighestNumber); ++number) {
    const THeldImage image(*dispatchQueue_, static_cast<int>(number));
    if (image.get()) copyToPosition(destination, number - 1, image.get());
  }
  return RC_SUCCESS;
}

template <class Src, class Dst>
unsigned int TFetchImage<Src, Dst>::GetMostRecentImage(Dst* destination, unsigned long size)
{
  if (!destination) return RC_P1_INVALID;
  if (!isFrameSize(size)) return RC_P2_INVALID;
  if (newestImage() < 1) return RC_NO_NEW_DATA;

  bool copied = false;
  for (int attempt = 0; attempt < kMostRecentTries; ++attempt) {
    const std::int64_t newest = newestImage();
    if (newest > kHighestNumber) {
      // Such a frame has no number to hold it by.
      unsigned char* latest = dispatchQueue_->GetLatestImage();
      if (latest) copyImageByLine(destination, latest);
      return latest ? RC_SUCCESS : RC_FRAME_UNAVAILABLE;
    }
    const THeldImage image(*dispatchQueue_, static_cast<int>(newest));
    if (!image.get()) continue;
    const bool refused = copyImageByLine(destination, image.get()) != RC_SUCCESS;
    copied = true;
    if (refused || dispatchQueue_->IsImageIntact(static_cast<int>(newest))) break;
  }
  return copied ? RC_SUCCESS : RC_FRAME_UNAVAILABLE;
}

template <class Src, class Dst>
unsigned int TFetchImage<Src, Dst>::GetImages(long first, long last, Dst* destination, unsigned long size,
                                              long* validFirst, long* validLast)
{
  if (validFirst) *validFirst = 0;
  if (validLast) *validLast = 0;
  if (!destination) return RC_P3_INVALID;
  if (!isFrameSize(size)) return RC_P4_INVALID;
  if (first < 1) return RC_P1_INVALID;
  if (first > last) return RC_P2_INVALID;

  long firstFound = 0;
  const std::int64_t end = std::min({std::int64_t{last}, newestImage(), kHighestNumber});
  for (std::int64_t number = std::max(std::int64_t{first}, oldestImage()); number <= end; ++number) {
    const THeldImage image(*dispatchQueue_, static_cast<int>(number));
    if (!image.get()) continue;
    if (firstFound == 0) {
      firstFound = static_cast<long>(number);
      if (validFirst) *validFirst = firstFound;
      copyToPosition(destination, number - first, image.get());
    }
    if (validLast) *validLast = static_cast<long>(number);
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
