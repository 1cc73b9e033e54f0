// SPDX-License-Identifier: MIT
// Something whose changes can be observed.
#include "utility/TSubject.h"

#include "utility/TObserver.h"

#include <algorithm>
#include <array>

namespace {

constexpr std::int32_t kCapacity = 64;

} // namespace

TSubject::TSubject() : capacity_(kCapacity), observers_(std::make_unique<TObserver*[]>(kCapacity)) {}

TSubject::~TSubject() = default;

void TSubject::RegisterObserver(TObserver* observer)
{
  if (!observer || count_ >= capacity_) return;
  observers_[count_] = observer;
  ++count_;
}

void TSubject::RemoveObserver(TObserver* observer)
{
  TObserver** const first = observers_.get();
  count_ = static_cast<std::int32_t>(std::remove(first, first + count_, observer) - first);
}

void TSubject::NotifyObservers()
{
  // Over a copy: an observer may change the list, and one that was removed may be gone.
  std::array<TObserver*, kCapacity> told;
  const std::int32_t count = count_;
  std::copy_n(observers_.get(), count, told.begin());
  for (std::int32_t index = 0; index < count; ++index)
    if (IsRegistered(told[index])) told[index]->DoUpdate();
}

bool TSubject::IsRegistered(const TObserver* observer) const
{
  const TObserver* const* const first = observers_.get();
  return std::find(first, first + count_, observer) != first + count_;
}
