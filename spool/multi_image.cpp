// SPDX-License-Identifier: MIT
// The two views of one place in a spool file that is memory while it is locked.
#include "spool/multi_image.h"

#include "features/TSDK3Exception.h"
#include "utility/TAutoQuorinCriticalSection.h"
#include "utility/TQuorinLibDebugOutput.h"

#include <string>

using QuorinUtility::TAutoQuorinCriticalSection;
using QuorinUtility::TQuorinLibDebugOutput;

void LogAndThrow(const char* file, int line, const char* function, const char* text)
{
  LogAndThrow(file, line, function, text, text);
}

void LogAndThrow(const char* file, int line, const char* function, const char* logged, const char* thrown)
{
  TQuorinLibDebugOutput::OutputText(file, line, function, TQuorinLibDebugOutput::Error, logged);
  throw TSDK3Exception(std::string(thrown));
}

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

TSerialMultiImage::TSerialMultiImage(IImage* file, std::uint64_t imageSizeBytes, unsigned int imagesPerFile)
    : file_(file), imageSizeBytes_(imageSizeBytes), imagesPerFile_(imagesPerFile)
{
  if (!file)
    LogAndThrow(__FILE__, __LINE__, __func__, "TMultiImage: Error - IImage* cannot be NULL in constructor\n");
  if (imagesPerFile == 0)
    LogAndThrow(__FILE__, __LINE__, __func__, "TMultiImage: Error - Number of imagse per file cannot be zero.\n",
                "TMultiImage: Error - Number of images per file cannot be zero\n");
  if (imageSizeBytes == 0)
    LogAndThrow(__FILE__, __LINE__, __func__, "TMultiImage: Error - Image size cannot be zero.\n",
                "TMultiImage: Error - Image size cannot be zero\n");
}

int TSerialMultiImage::Lock(unsigned char*& destination)
{
  const TAutoQuorinCriticalSection lock(&lock_);
  if (lockCount_ == imagesPerFile_)
    LogAndThrow(__FILE__, __LINE__, __func__,
                "TMultiImage: Error - Lock called more times than there are images per file.\n");
  if (lockCount_ == 0) {
    const int result = file_->Lock(nextDestination_);
    if (result != 0) return result;
  }
  destination = nextDestination_;
  ++lockCount_;
  nextDestination_ += imageSizeBytes_;
  return 0;
}

int TSerialMultiImage::Unlock()
{
  const TAutoQuorinCriticalSection lock(&lock_);
  if (unlockCount_ == imagesPerFile_)
    LogAndThrow(__FILE__, __LINE__, __func__,
                "TMultiImage: Error - Unlock called more times than there are images per file.\n");
  ++unlockCount_;
  return unlockCount_ == imagesPerFile_ ? file_->Unlock() : 0;
}

int TSerialMultiImage::ForceUnlock()
{
  return file_->Unlock();
}
