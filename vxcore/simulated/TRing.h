// SPDX-License-Identifier: MIT
// A queue that keeps its memory.
#pragma once

#include <algorithm>
#include <cstddef>
#include <vector>

namespace vxsim {

/// First-in first-out queue of small values in one growing block: no allocation once it is large enough. Not
/// thread-safe; guarded by its owner.
template <typename T>
class TRing final
{
public:
  bool IsEmpty() const { return count_ == 0; }
  size_t Size() const { return count_; }
  T& Front() { return slots_[first_]; }
  T& At(size_t position) { return slots_[(first_ + position) & (slots_.size() - 1)]; }
  const T& At(size_t position) const { return slots_[(first_ + position) & (slots_.size() - 1)]; }

  void Push(const T& value)
  {
    if (count_ == slots_.size()) Grow();
    slots_[(first_ + count_) & (slots_.size() - 1)] = value;
    ++count_;
  }
  T Pop()
  {
    const T value = slots_[first_];
    first_ = (first_ + 1) & (slots_.size() - 1);
    --count_;
    return value;
  }
  void Clear() { first_ = count_ = 0; }

private:
  void Grow()
  {
    std::vector<T> larger(std::max<size_t>(16, slots_.size() * 2)); // always a power of two
    for (size_t i = 0; i < count_; ++i) larger[i] = At(i);
    slots_.swap(larger);
    first_ = 0;
  }

  std::vector<T> slots_;
  size_t first_ = 0;
  size_t count_ = 0;
};

} // namespace vxsim
