// SPDX-License-Identifier: MIT
// Stores each frame's timestamp and passes the frame on to another dispatch queue.
#include "acquisition/TMetadataXerox.h"

#include "acquisition/TTimestampRepository.h"

#include <algorithm>

TMetadataXerox::TMetadataXerox(TDispatchQueue* wrapped, TTimestampRepository* repository)
    : wrapped_(wrapped), repository_(repository)
{
}

int TMetadataXerox::Dispatch(unsigned char* buffer, int sizeBytes)
{
  if (buffer) StoreTimestamp(buffer, sizeBytes);
  return wrapped_->Dispatch(buffer, sizeBytes);
}

void TMetadataXerox::StoreTimestamp(unsigned char* buffer, int sizeBytes)
{
  // A frame cannot be longer than its slot, even if a larger size was reported.
  const std::int64_t size = std::min<std::int64_t>(sizeBytes, wrapped_->GetImageSizeBytes());
  const TFrameTimestamp timestamp = FindFrameTimestamp(parser_, buffer, size);
  wrapped_->SetTimestampOfNextFrame(timestamp);
  if (timestamp.location) repository_->AddTimestamp(timestamp.ticks);
}

void TMetadataXerox::Initialise(std::int64_t imageSizeBytes)
{
  wrapped_->Initialise(imageSizeBytes);
  wrapped_->ExpectClock();
}

void TMetadataXerox::Begin()
{
  wrapped_->Begin();
}

void TMetadataXerox::Finalise()
{
  wrapped_->Finalise();
}

void TMetadataXerox::Abort()
{
  wrapped_->Abort();
}

unsigned char* TMetadataXerox::GetLatestImage()
{
  return wrapped_->GetLatestImage();
}

unsigned char* TMetadataXerox::GetImage8(int image)
{
  return wrapped_->GetImage8(image);
}

void TMetadataXerox::ReleaseImage8(unsigned char* buffer)
{
  wrapped_->ReleaseImage8(buffer);
}

unsigned char* TMetadataXerox::GetImage(int image)
{
  return wrapped_->GetImage(image);
}

std::int64_t TMetadataXerox::GetMinimumImageAvailable()
{
  return wrapped_->GetMinimumImageAvailable();
}

std::int64_t TMetadataXerox::GetMaximumImageAvailable()
{
  return wrapped_->GetMaximumImageAvailable();
}

std::int64_t TMetadataXerox::GetImageSizeBytes()
{
  return wrapped_->GetImageSizeBytes();
}

void TMetadataXerox::SetDispatchRoutine(IDispatchRoutine* routine)
{
  wrapped_->SetDispatchRoutine(routine);
}

TFrameMemory TMetadataXerox::AcquireImage(std::int64_t image)
{
  return wrapped_->AcquireImage(image);
}

bool TMetadataXerox::IsImageIntact(std::int64_t image, const unsigned char* frame)
{
  return wrapped_->IsImageIntact(image, frame);
}

std::optional<std::int64_t> TMetadataXerox::GetImageTicks(std::int64_t image)
{
  return wrapped_->GetImageTicks(image);
}

std::uint64_t TMetadataXerox::RunNumber()
{
  return wrapped_->RunNumber();
}

bool TMetadataXerox::IsSlot(const unsigned char* buffer)
{
  return wrapped_->IsSlot(buffer);
}

bool TMetadataXerox::HasFailed()
{
  return wrapped_->HasFailed();
}

std::uint64_t TMetadataXerox::Progress()
{
  return wrapped_->Progress();
}
