// SPDX-License-Identifier: MIT
// The memory of a ring of frames.
#pragma once

#include "acquisition/TRingMemory.h"
#include "acquisition/TSlotClocks.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>

/// One mapping with all slots of a ring, and the table that says which slot's memory is where. Shared by the
/// ring and by every copy that is being made out of it, so that memory stays until the last of them releases it. Slots
/// start at multiples of a cache line, or of a page when they are that large, and are not zeroed. Large rings are in
/// huge pages where the system has them: in the camera's first pass through the ring, making small pages takes longer
/// than writing the frames. The table may be read by any thread; only the acquisition thread swaps entries.
class TFrameSlab final
{
public:
  /// Throws std::bad_alloc when the memory is not to be had. @p reservation counts it as long as it is there.
  TFrameSlab(std::uint64_t frameSizeBytes, std::uint64_t count,
             std::shared_ptr<const TRingMemory::TReservation> reservation = nullptr);
  ~TFrameSlab();
  TFrameSlab(const TFrameSlab&) = delete;
  TFrameSlab& operator=(const TFrameSlab&) = delete;

  std::uint64_t FrameSizeBytes() const { return frameSizeBytes_; }
  std::uint64_t Count() const { return count_; }
  /// Bytes of memory, the room between slots included.
  std::uint64_t SizeBytes() const { return sizeBytes_; }
  /// Whether @p buffer is the start of a slot.
  bool IsSlot(const unsigned char* buffer) const;

  /// The memory of slot @p index, from 0 to Count() - 1.
  unsigned char* Slot(std::uint64_t index) const { return slots_[index].load(std::memory_order_acquire); }
  /// The index of the slot that starts at @p buffer, looked for from @p from on and around; Count() when there is
  /// none.
  std::uint64_t IndexOf(const unsigned char* buffer, std::uint64_t from) const;
  void SwapSlots(std::uint64_t left, std::uint64_t right);
  /// Puts the table back into the order of the memory.
  void ResetSlots();

  TSlotClocks& Clocks() { return clocks_; }
  const TSlotClocks& Clocks() const { return clocks_; }
  /// Before a run: no slot has an image, and the last slot is marked as unused.
  void PrepareRun();
  /// Whether no whole frame with metadata has been put into the last slot's memory since PrepareRun().
  bool IsLastSlotUnused() const;

private:
  unsigned char* LastFrameEnd() const;

  std::shared_ptr<const TRingMemory::TReservation> reservation_;
  std::uint64_t frameSizeBytes_;
  std::uint64_t count_;
  std::uint64_t slotStrideBytes_;
  std::uint64_t sizeBytes_;
  unsigned char* memory_;
  bool isFresh_ = true; // nothing but zeros in the memory, as far as it is up to this class
  std::unique_ptr<std::atomic<unsigned char*>[]> slots_;
  TSlotClocks clocks_;
};
