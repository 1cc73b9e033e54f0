// SPDX-License-Identifier: MIT
// What the dispatch queues over a circular buffer have in common.
#include "acquisition/TRingDispatchQueue.h"

#include "acquisition/TCircularBuffer.h"
#include "features/device_access.h"
#include "utility/IDispatchRoutine.h"

#include <algorithm>
#include <limits>

namespace {

// Image numbers begin at 1; anything below is no image.
std::uint64_t ImageNumber(std::int64_t image)
{
  return image < 1 ? 0 : static_cast<std::uint64_t>(image);
}

} // namespace

void TRingDispatchQueue::Initialise(std::int64_t imageSizeBytes)
{
  imageSizeBytes_ = imageSizeBytes;
  timestampOfNextFrame_ = {};
  circularBuffer_->SetKindOfRun(ReusesSlots(), false);
}

void TRingDispatchQueue::ExpectClock()
{
  circularBuffer_->SetKindOfRun(ReusesSlots(), true);
}

unsigned char* TRingDispatchQueue::GetLatestImage()
{
  return circularBuffer_->GetBufferForImage(circularBuffer_->GetMaxImageIndex());
}

unsigned char* TRingDispatchQueue::GetImage8(int image)
{
  return AcquireImage(image).bytes;
}

TFrameMemory TRingDispatchQueue::AcquireImage(std::int64_t image)
{
  return circularBuffer_->AcquireBufferForImage(ImageNumber(image));
}

void TRingDispatchQueue::ReleaseImage8(unsigned char* buffer)
{
  circularBuffer_->ReleaseBuffer(buffer);
}

unsigned char* TRingDispatchQueue::GetImage(int image)
{
  return circularBuffer_->GetBufferForImage(ImageNumber(image));
}

std::int64_t TRingDispatchQueue::GetMinimumImageAvailable()
{
  return static_cast<std::int64_t>(circularBuffer_->GetMinImageIndex());
}

std::int64_t TRingDispatchQueue::GetMaximumImageAvailable()
{
  return static_cast<std::int64_t>(circularBuffer_->GetMaxImageIndex());
}

std::int64_t TRingDispatchQueue::GetImageSizeBytes()
{
  return imageSizeBytes_;
}

void TRingDispatchQueue::SetDispatchRoutine(IDispatchRoutine* routine)
{
  dispatchRoutine_ = routine;
}

bool TRingDispatchQueue::IsImageIntact(std::int64_t image, const unsigned char* frame)
{
  return circularBuffer_->IsImageIntact(ImageNumber(image), frame);
}

std::optional<std::int64_t> TRingDispatchQueue::GetImageTicks(std::int64_t image)
{
  return circularBuffer_->GetTicks(ImageNumber(image));
}

std::uint64_t TRingDispatchQueue::RunNumber()
{
  return circularBuffer_->GetRunNumber();
}

bool TRingDispatchQueue::IsSlot(const unsigned char* buffer)
{
  return circularBuffer_->IsSlot(buffer);
}

bool TRingDispatchQueue::CountFrame(unsigned char* buffer)
{
  const bool isPlaced = buffer && circularBuffer_->PlaceNext(buffer, timestampOfNextFrame_);
  timestampOfNextFrame_ = {};
  if (!isPlaced) return false;
  circularBuffer_->Increment();
  if (dispatchRoutine_) dispatchRoutine_->Signal();
  return true;
}

void TRingDispatchQueue::RequeueSlot(unsigned char* buffer, int sizeBytes)
{
  const std::int64_t slotBytes = GetImageSizeBytes() > 0 ? GetImageSizeBytes() : sizeBytes;
  QueueBuffer(coreHandle_, buffer,
              static_cast<int>(std::min<std::int64_t>(slotBytes, std::numeric_limits<int>::max())));
}
