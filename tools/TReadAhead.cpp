// SPDX-License-Identifier: MIT
// One thread, and the image that it reads.
#include "tools/TReadAhead.h"

#include "runs/checksum.h"

#include <new>
#include <utility>

namespace vxtool {

TReadAhead::TReadAhead(const std::string& directory, std::int64_t imagesPerFile, std::int64_t imageBytes)
    : files_(directory, imagesPerFile, imageBytes), thread_([this] { ReadImages(); })
{
}

TReadAhead::~TReadAhead()
{
  {
    const std::lock_guard lock(mutex_);
    isEnding_ = true;
  }
  changed_.notify_all();
  thread_.join();
}

void TReadAhead::Begin(std::int64_t image)
{
  std::unique_lock lock(mutex_);
  changed_.wait(lock, [this] { return wanted_ == TRunImages::kNoImage; });
  wanted_ = image;
  read_ = TRunImages::kNoImage;
  changed_.notify_all();
}

bool TReadAhead::Take(std::int64_t image, TStoredImage& stored)
{
  std::unique_lock lock(mutex_);
  changed_.wait(lock, [this] { return wanted_ == TRunImages::kNoImage; });
  if (read_ != image) return false;
  std::swap(stored, stored_);
  read_ = TRunImages::kNoImage;
  return true;
}

void TReadAhead::ReadImages()
{
  std::unique_lock lock(mutex_);
  while (true) {
    changed_.wait(lock, [this] { return isEnding_ || wanted_ != TRunImages::kNoImage; });
    if (isEnding_) return;
    const std::int64_t image = wanted_;
    lock.unlock();
    bool isRead = false;
    try {
      isRead = files_.ReadImage(image, stored_.bytes);
    } catch (const std::bad_alloc&) { // the caller reads it, and says so
    }
    if (isRead) stored_.checksum = Checksum(stored_.bytes.data(), stored_.bytes.size());
    lock.lock();
    read_ = isRead ? image : TRunImages::kNoImage;
    wanted_ = TRunImages::kNoImage;
    changed_.notify_all();
  }
}

} // namespace vxtool
