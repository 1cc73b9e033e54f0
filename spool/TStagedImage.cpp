// SPDX-License-Identifier: MIT
// A place in a spool file that is filled in memory and written as a whole.
#include "spool/TStagedImage.h"

#include "spool/TSpoolFile.h"
#include "spool/TStagingPool.h"

#include <cerrno>

std::size_t TStagedImage::PieceBytes(std::size_t sizeBytes)
{
  return sizeBytes + TSpoolVolume::kAlignment;
}

TStagedImage::TStagedImage(TSpoolFile* file, TStagingPool* pool, std::size_t sizeBytes, std::uint64_t offset)
    : file_(file), pool_(pool), sizeBytes_(sizeBytes), offset_(offset)
{
}

TStagedImage::~TStagedImage()
{
  if (piece_) pool_->Release(piece_);
}

int TStagedImage::Lock(unsigned char*& destination)
{
  if (!piece_) piece_ = pool_->Acquire();
  if (!piece_) return ENOMEM;
  destination = Memory();
  return 0;
}

int TStagedImage::Unlock()
{
  return piece_ ? file_->Write(Memory(), sizeBytes_, offset_) : 0;
}

int TStagedImage::WritePart(std::uint64_t begin, std::uint64_t end)
{
  return piece_ ? file_->Write(Memory() + begin, end - begin, offset_ + begin) : 0;
}

unsigned char* TStagedImage::Memory() const
{
  return piece_ + offset_ % TSpoolVolume::kAlignment;
}
