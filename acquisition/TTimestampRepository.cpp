// SPDX-License-Identifier: MIT
// The camera's tick count at each frame of a run.
#include "acquisition/TTimestampRepository.h"

#include "utility/TAutoQuorinCriticalSection.h"

using QuorinUtility::TAutoQuorinCriticalSection;

TTimestampRepository::TTimestampRepository(std::uint64_t capacity) : capacity_(capacity)
{
  timestamps_.reserve(capacity);
}

void TTimestampRepository::AddTimestamp(std::int64_t ticks)
{
  const TAutoQuorinCriticalSection lock(&lock_);
  if (timestamps_.size() < capacity_) {
    if (count_ == 0) {
      firstTimeOfDay_.GetCurrentDateAndTimeOfDay();
      firstTimestamp_ = ticks;
    }
    timestamps_.push_back(ticks);
  } else if (capacity_ > 0) {
    timestamps_[count_ % capacity_] = ticks;
  }
  ++count_;
}

int TTimestampRepository::GetTimestamp(std::uint64_t index, std::int64_t& ticks) const
{
  const TAutoQuorinCriticalSection lock(&lock_);
  const std::uint64_t lowest = count_ > capacity_ ? count_ - capacity_ : 0;
  if (index < lowest || index >= count_) return 1;
  ticks = timestamps_[index % capacity_];
  return 0;
}

std::uint64_t TTimestampRepository::Throughput() const
{
  const TAutoQuorinCriticalSection lock(&lock_);
  return count_;
}

std::int64_t TTimestampRepository::GetTimestampForFirstFrame() const
{
  const TAutoQuorinCriticalSection lock(&lock_);
  return firstTimestamp_;
}

TVXSystemTime TTimestampRepository::GetTimeOfDayForFirstFrame() const
{
  const TAutoQuorinCriticalSection lock(&lock_);
  return firstTimeOfDay_;
}

std::uint64_t TTimestampRepository::Capacity() const
{
  const TAutoQuorinCriticalSection lock(&lock_);
  return timestamps_.capacity();
}

std::uint64_t TTimestampRepository::CurrentSize() const
{
  const TAutoQuorinCriticalSection lock(&lock_);
  return timestamps_.size();
}
