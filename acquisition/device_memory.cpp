// SPDX-License-Identifier: MIT
// Looking into memory that a camera may be writing.
#include "acquisition/device_memory.h"

// Not looked at by ThreadSanitizer: the other side is a device, which has no thread; that a simulated one has is no
// reason to synchronise. What is torn compares unequal, or equal only as long as no byte that changes has changed.
#if defined(__GNUC__)
__attribute__((no_sanitize("thread")))
#endif
bool DeviceMemoryEquals(const unsigned char* memory, const void* bytes, std::size_t size)
{
  const volatile unsigned char* const present = memory;
  const auto* const expected = static_cast<const unsigned char*>(bytes);
  for (std::size_t i = 0; i < size; ++i)
    if (present[i] != expected[i]) return false;
  return true;
}
