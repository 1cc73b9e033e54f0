// SPDX-License-Identifier: MIT
// Memory that cannot be had at a chosen moment. In a separate source: where g++ can see into these operators, it takes
// one of them with the other's counterpart for a mistake.
#include "tests/spool/RefusedAllocations.h"

#include <cstddef>
#include <cstdlib>
#include <new>

std::atomic<long> allocationsLeft{kNever};

namespace {

/// The INI library keeps its strings in a list, and loses the one whose node it does not get. Never refused.
constexpr std::size_t kListNode = 5 * sizeof(void*);

bool IsRefused(std::size_t size)
{
  return size != kListNode && allocationsLeft != kNever && allocationsLeft.fetch_sub(1) == 0;
}

} // namespace

void* operator new(std::size_t size)
{
  void* const memory = IsRefused(size) ? nullptr : std::malloc(size > 0 ? size : 1);
  if (!memory) throw std::bad_alloc();
  return memory;
}

void* operator new(std::size_t size, const std::nothrow_t& /*unused*/) noexcept
{
  return IsRefused(size) ? nullptr : std::malloc(size > 0 ? size : 1);
}

void operator delete(void* memory) noexcept
{
  std::free(memory);
}

void operator delete(void* memory, std::size_t /*size*/) noexcept
{
  std::free(memory);
}
