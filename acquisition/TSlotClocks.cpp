// SPDX-License-Identifier: MIT
// Which image each slot of a ring has, and the camera's clock value in it.
#include "acquisition/TSlotClocks.h"

#include "acquisition/device_memory.h"

#include <algorithm>
#include <atomic>
#include <new>

namespace {

template <class T>
T Load(T& value, std::memory_order order)
{
  return std::atomic_ref(value).load(order);
}

template <class T>
void Store(T& value, T to, std::memory_order order)
{
  std::atomic_ref(value).store(to, order);
}

} // namespace

bool TSlotClocks::TClock::IsIn(const unsigned char* slot) const
{
  return DeviceMemoryEquals(slot + offset, &ticks, sizeof ticks);
}

TSlotClocks::TSlotClocks(std::uint64_t count)
    : entries_(static_cast<TEntry*>(std::calloc(std::max<std::uint64_t>(count, 1), sizeof(TEntry))))
{
  if (!entries_) throw std::bad_alloc();
}

// The number is 0 while the rest changes, so that no reader takes one image's value for another's.
void TSlotClocks::Set(std::uint64_t index, std::uint64_t image, TClock clock)
{
  TEntry& entry = entries_[index];
  used_ = std::max(used_, index + 1);
  Store(entry.image, std::uint64_t{0}, std::memory_order_relaxed);
  std::atomic_thread_fence(std::memory_order_release);
  Store(entry.clock.ticks, clock.ticks, std::memory_order_relaxed);
  Store(entry.clock.offset, clock.offset, std::memory_order_relaxed);
  Store(entry.image, image, std::memory_order_release);
}

void TSlotClocks::Clear(std::uint64_t index)
{
  Store(entries_[index].image, std::uint64_t{0}, std::memory_order_release);
}

void TSlotClocks::ClearAll()
{
  for (std::uint64_t index = 0; index < used_; ++index) Clear(index);
  used_ = 0;
}

std::optional<TSlotClocks::TClock> TSlotClocks::Find(std::uint64_t index, std::uint64_t image) const
{
  TEntry& entry = entries_[index];
  if (Load(entry.image, std::memory_order_acquire) != image) return std::nullopt;
  const TClock clock{Load(entry.clock.ticks, std::memory_order_relaxed),
                     Load(entry.clock.offset, std::memory_order_relaxed)};
  std::atomic_thread_fence(std::memory_order_acquire);
  if (Load(entry.image, std::memory_order_relaxed) != image) return std::nullopt;
  return clock;
}
