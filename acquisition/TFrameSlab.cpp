// SPDX-License-Identifier: MIT
// The memory of a ring of frames.
#include "acquisition/TFrameSlab.h"

#include "acquisition/device_memory.h"

#include <cstring>
#include <limits>
#include <new>
#include <sys/mman.h>
#include <utility>

namespace {

constexpr std::uint64_t kCacheLineBytes = 64;
constexpr std::uint64_t kPageBytes = 4096;
constexpr std::uint64_t kHugePageBytes = 2 * 1024 * 1024;
// Below, the rounding up to huge pages would show in the memory that a short run takes.
constexpr std::uint64_t kMinHugePageRingBytes = 16 * kHugePageBytes;
// Room behind each frame, so that code which reads a frame in words of 8 bytes stays inside the slot.
constexpr std::uint64_t kSpareBytes = 8;
// A frame with metadata ends with the length of its last chunk, which is never 0, and the length ends these bytes.
constexpr std::uint64_t kMarkBytes = 8;

std::uint64_t RoundUp(std::uint64_t value, std::uint64_t multiple)
{
  return (value + multiple - 1) / multiple * multiple;
}

std::uint64_t SlotStride(std::uint64_t frameSizeBytes)
{
  if (frameSizeBytes > std::numeric_limits<std::uint64_t>::max() / 2) throw std::bad_alloc();
  // Rounding small slots to pages would waste much of the budget; large ones lose little by it.
  const std::uint64_t alignment = frameSizeBytes >= 16 * kPageBytes ? kPageBytes : kCacheLineBytes;
  return RoundUp(frameSizeBytes + kSpareBytes, alignment);
}

std::uint64_t Product(std::uint64_t left, std::uint64_t right)
{
  std::uint64_t product = 0;
  if (__builtin_mul_overflow(left, right, &product)) throw std::bad_alloc();
  return product;
}

unsigned char* Map(std::uint64_t sizeBytes)
{
  if (sizeBytes == 0) return nullptr;
  void* memory = mmap(nullptr, sizeBytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (memory == MAP_FAILED) throw std::bad_alloc();
  // Pages are still made one by one when they are first written. A system without huge pages refuses, which changes
  // nothing.
  if (sizeBytes >= kMinHugePageRingBytes) madvise(memory, sizeBytes, MADV_HUGEPAGE);
  return static_cast<unsigned char*>(memory);
}

} // namespace

TFrameSlab::TFrameSlab(std::uint64_t frameSizeBytes, std::uint64_t count,
                       std::shared_ptr<const TRingMemory::TReservation> reservation)
    : reservation_(std::move(reservation)),
      frameSizeBytes_(frameSizeBytes),
      count_(count),
      slotStrideBytes_(SlotStride(frameSizeBytes)),
      sizeBytes_(Product(slotStrideBytes_, count)),
      memory_(nullptr),
      slots_(std::make_unique<std::atomic<unsigned char*>[]>(count)),
      clocks_(count)
{
  memory_ = Map(sizeBytes_);
  ResetSlots();
}

TFrameSlab::~TFrameSlab()
{
  if (memory_) munmap(memory_, sizeBytes_);
}

bool TFrameSlab::IsSlot(const unsigned char* buffer) const
{
  if (buffer < memory_ || buffer >= memory_ + sizeBytes_) return false;
  return static_cast<std::uint64_t>(buffer - memory_) % slotStrideBytes_ == 0;
}

std::uint64_t TFrameSlab::IndexOf(const unsigned char* buffer, std::uint64_t from) const
{
  for (std::uint64_t step = 0; step < count_; ++step) {
    const std::uint64_t index = (from + step) % count_;
    if (Slot(index) == buffer) return index;
  }
  return count_;
}

void TFrameSlab::SwapSlots(std::uint64_t left, std::uint64_t right)
{
  unsigned char* const leftSlot = Slot(left);
  slots_[left].store(Slot(right), std::memory_order_release);
  slots_[right].store(leftSlot, std::memory_order_release);
}

void TFrameSlab::ResetSlots()
{
  for (std::uint64_t index = 0; index < count_; ++index)
    slots_[index].store(memory_ + index * slotStrideBytes_, std::memory_order_release);
}

// Memory that is fresh from the system has the mark already, and looking there would take a page.
void TFrameSlab::PrepareRun()
{
  clocks_.ClearAll();
  if (std::exchange(isFresh_, false)) return;
  if (unsigned char* const end = LastFrameEnd(); end && !IsLastSlotUnused())
    std::memset(end - kMarkBytes, 0, kMarkBytes);
}

bool TFrameSlab::IsLastSlotUnused() const
{
  constexpr unsigned char kMark[kMarkBytes] = {};
  const unsigned char* const end = LastFrameEnd();
  return end && DeviceMemoryEquals(end - kMarkBytes, kMark, kMarkBytes);
}

// Null where there is no room for the mark.
unsigned char* TFrameSlab::LastFrameEnd() const
{
  if (count_ == 0 || frameSizeBytes_ < kMarkBytes) return nullptr;
  return memory_ + (count_ - 1) * slotStrideBytes_ + frameSizeBytes_;
}
