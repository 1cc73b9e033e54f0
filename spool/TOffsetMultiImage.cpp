// SPDX-License-Identifier: MIT
// One place of a spool file.
#include "spool/TOffsetMultiImage.h"

#include "spool/spool_error.h"

TOffsetMultiImage::TOffsetMultiImage(IImage* file, std::uint64_t imageSizeBytes, unsigned int position)
    : file_(file), imageSizeBytes_(imageSizeBytes), position_(position)
{
  if (!file)
    LogAndThrow(__FILE__, __LINE__, __func__, "TNthMultiImage: Error - IImage* cannot be NULL in constructor\n");
  if (imageSizeBytes == 0)
    LogAndThrow(__FILE__, __LINE__, __func__, "TNthMultiImage: Error - Image size cannot be zero.\n",
                "TNthMultiImage: Error - Image size cannot be zero\n");
}

int TOffsetMultiImage::Lock(unsigned char*& destination)
{
  unsigned char* base = nullptr;
  const int result = file_->Lock(base);
  if (result == 0) destination = base + position_ * imageSizeBytes_;
  return result;
}

int TOffsetMultiImage::Unlock()
{
  return file_->Unlock();
}
