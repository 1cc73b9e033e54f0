// SPDX-License-Identifier: MIT
// The frames and buffers of an open camera, between sensor and caller.
#include "vxcore/simulated/TFrameBuffers.h"

#include <algorithm>

namespace vxsim {

void TFrameBuffers::SwapFirstWith(long long place)
{
  const auto index = std::clamp<long long>(place, 1, static_cast<long long>(queued_.Size())) - 1;
  std::swap(queued_.Front(), queued_.At(static_cast<size_t>(index)));
}

bool TFrameBuffers::HasQueuedBelow(int64_t sizeBytes) const
{
  for (size_t i = 0; i < queued_.Size(); ++i) {
    if (queued_.At(i).sizeBytes < sizeBytes) return true;
  }
  return false;
}

bool TFrameBuffers::Store(TExposedFrame frame, size_t limit)
{
  if (memory_.size() >= limit) {
    overflow_ = true;
    return false;
  }
  memory_.push_back(std::move(frame));
  return true;
}

TExposedFrame TFrameBuffers::TakeStored()
{
  TExposedFrame frame = std::move(memory_.front());
  memory_.pop_front();
  return frame;
}

TAnswer TFrameBuffers::TakeAnswer()
{
  if (!overflow_) return ready_.Pop();
  overflow_ = false;
  TAnswer lost;
  lost.code = VX_ERR_HARDWARE_OVERFLOW;
  return lost;
}

size_t TFrameBuffers::FilledCount() const
{
  size_t count = 0;
  for (size_t i = 0; i < ready_.Size(); ++i) count += ready_.At(i).isQueued ? 1 : 0;
  return count;
}

size_t TFrameBuffers::Clear()
{
  const size_t filled = FilledCount();
  ready_.Clear();
  queued_.Clear();
  lastDelivered_ = {};
  overflow_ = false;
  return filled;
}

} // namespace vxsim
