// SPDX-License-Identifier: MIT
// A frame of a dispatch queue, held for as long as this object lives.
#pragma once

#include "acquisition/TDispatchQueue.h"

/// Takes a frame with GetImage8() and gives it back. Used by TFetchImage during a copy; borrows the queue.
/// Reentrant.
class THeldImage final
{
public:
  THeldImage(TDispatchQueue& queue, int image) : queue_(queue), bytes_(queue.GetImage8(image)) {}
  ~THeldImage()
  {
    if (bytes_) queue_.ReleaseImage8(bytes_);
  }
  THeldImage(const THeldImage&) = delete;
  THeldImage& operator=(const THeldImage&) = delete;

  /// The frame, or null when the queue does not have it.
  unsigned char* get() const { return bytes_; }

private:
  TDispatchQueue& queue_;
  unsigned char* const bytes_;
};
