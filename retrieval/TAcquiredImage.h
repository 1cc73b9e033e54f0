// SPDX-License-Identifier: MIT
// A frame of a dispatch queue, whose memory stays for as long as this object lives.
#pragma once

#include "acquisition/TDispatchQueue.h"

/// Acquires a frame and releases it. Used by TFetchImage during a copy; borrows the queue. Reentrant.
class TAcquiredImage final
{
public:
  TAcquiredImage(TDispatchQueue& queue, std::int64_t image)
      : queue_(queue), image_(image), memory_(queue.AcquireImage(image))
  {
  }
  ~TAcquiredImage()
  {
    if (memory_.bytes) queue_.ReleaseImage8(memory_.bytes);
  }
  TAcquiredImage(const TAcquiredImage&) = delete;
  TAcquiredImage& operator=(const TAcquiredImage&) = delete;

  /// False when the queue does not have the frame.
  explicit operator bool() const { return memory_.bytes != nullptr; }
  const TFrameMemory& Memory() const { return memory_; }
  /// Whether what was read of it up to now is of this frame alone.
  bool IsIntact() const { return queue_.IsImageIntact(image_, memory_.bytes); }

private:
  TDispatchQueue& queue_;
  const std::int64_t image_;
  const TFrameMemory memory_;
};
