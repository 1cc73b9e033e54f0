// SPDX-License-Identifier: MIT
// The frames and buffers of an open camera, between sensor and caller.
#pragma once

#include "vxcore/backend/IFrameFaults.h"
#include "vxcore/simulated/TFramePainter.h"
#include "vxcore/simulated/TRing.h"

#include "vxcore.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <utility>
#include <vector>

namespace vxsim {

/// A frame that is exposed but not painted yet.
struct TExposedFrame
{
  TFramePainter::TFrame content;
  bool pushed = false; ///< its bytes were given
  std::vector<unsigned char> bytes;
  std::vector<vxcore::TPlannedFault> faults;
};

/// What a wait answers: a buffer, or a code.
struct TAnswer
{
  unsigned char* bytes = nullptr;
  int sizeBytes = 0;
  int code = VX_SUCCESS;
  bool isQueued = true; ///< the caller had queued the buffer
};

/// Empty buffers in the order in which they were queued, exposed frames in the camera's memory, and answers that
/// no wait has taken. Owned by TAcquisition, guarded by its lock.
class TFrameBuffers final
{
public:
  struct TBuffer
  {
    unsigned char* bytes = nullptr;
    int sizeBytes = 0;
  };

  // Empty buffers.
  void Queue(const TBuffer& buffer) { queued_.Push(buffer); }
  bool HasQueued() const { return !queued_.IsEmpty(); }
  const TBuffer& FirstQueued() { return queued_.Front(); }
  TBuffer TakeQueued() { return queued_.Pop(); }
  /// Puts the buffer at @p place (from 1, the last one at most) into the first place, and the first into its.
  void SwapFirstWith(long long place);
  bool HasQueuedBelow(int64_t sizeBytes) const;

  // The camera's memory.
  bool HasStored() const { return !memory_.empty(); }
  size_t StoredCount() const { return memory_.size(); }
  /// False: the memory has @p limit frames already, and the next wait answers that a frame is lost.
  bool Store(TExposedFrame frame, size_t limit);
  TExposedFrame TakeStored();
  /// Forgets the frames in memory; how many there were.
  size_t ClearStored() { return std::exchange(memory_, {}).size(); }

  // Answers.
  void Add(const TAnswer& answer) { ready_.Push(answer); }
  /// Adds the answer of a frame that may be repeated.
  void Deliver(const TAnswer& answer)
  {
    lastDelivered_ = answer;
    ready_.Push(answer);
  }
  /// Notes a frame that is delivered past the answers.
  void NoteDelivered(const TAnswer& answer) { lastDelivered_ = answer; }
  const TAnswer& LastDelivered() const { return lastDelivered_; }
  bool HasAnswer() const { return overflow_ || !ready_.IsEmpty(); }
  TAnswer TakeAnswer();
  void ClearOverflow() { overflow_ = false; }

  /// Buffers of the caller, empty or filled.
  size_t CallerBufferCount() const { return queued_.Size() + FilledCount(); }
  /// Returns every buffer to the caller; how many were filled.
  size_t Clear();

private:
  size_t FilledCount() const;

  TRing<TBuffer> queued_;
  std::deque<TExposedFrame> memory_;
  TRing<TAnswer> ready_;
  TAnswer lastDelivered_;
  bool overflow_ = false; ///< the next wait answers that frames were lost
};

} // namespace vxsim
