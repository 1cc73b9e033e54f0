// SPDX-License-Identifier: MIT
// Something whose changes can be observed.
#include "utility/TSubject.h"

#include "utility/TObserver.h"

#include <algorithm>

TSubject::TSubject() : capacity_(kCapacity), observers_(std::make_unique<TObserver*[]>(kCapacity)) {}

TSubject::~TSubject() = default;

void TSubject::RegisterObserver(TObserver* observer)
{
  if (!observer || count_ >= capacity_) return;
  observers_[count_] = observer;
  numbers_[static_cast<std::size_t>(count_)] = nextNumber_++;
  ++count_;
}

void TSubject::RemoveObserver(TObserver* observer)
{
  std::int32_t kept = 0;
  for (std::int32_t index = 0; index < count_; ++index) {
    if (observers_[index] == observer) continue;
    observers_[kept] = observers_[index];
    numbers_[static_cast<std::size_t>(kept)] = numbers_[static_cast<std::size_t>(index)];
    ++kept;
  }
  count_ = kept;
}

void TSubject::NotifyObservers()
{
  // Over a copy: an observer may change the list, and one that was removed may be destroyed.
  std::array<TObserver*, kCapacity> notified;
  const TNumbers numbers = numbers_;
  const auto count = static_cast<std::size_t>(count_);
  std::copy_n(observers_.get(), count, notified.begin());
  for (std::size_t index = 0; index < count; ++index)
    if (IsRegistered(numbers[index])) notified[index]->DoUpdate();
}

bool TSubject::IsRegistered(std::uint64_t number) const
{
  return std::binary_search(numbers_.begin(), numbers_.begin() + count_, number);
}
