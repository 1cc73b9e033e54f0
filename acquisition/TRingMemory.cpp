// SPDX-License-Identifier: MIT
// How much memory the rings of all cameras have.
#include "acquisition/TRingMemory.h"

#include "utility/control_group.h"
#include "utility/TMutex.h"
#include "utility/TNeverDestroyed.h"
#include "utility/TQuorinMemoryStatistics.h"

#include <algorithm>
#include <new>

namespace {

struct TSum
{
  TMutex mutex;
  std::uint64_t bytes GUARDED_BY(mutex) = 0;
};
TNeverDestroyed<TSum> sum; // cameras may still be open when the program ends

} // namespace

std::uint64_t TRingMemory::BudgetBytes()
{
  const std::uint64_t machine = QuorinUtility::TQuorinMemoryStatistics::Instance()->GetTotalPhysical();
  return std::min(machine, ControlGroupMemoryLimit()) / 4 * 3;
}

std::shared_ptr<const TRingMemory::TReservation> TRingMemory::Reserve(std::uint64_t bytes, bool sharesBudget)
{
  const std::uint64_t budget = sharesBudget ? BudgetBytes() : 0;
  const auto reservation = std::make_shared<TReservation>(shared_from_this());
  const TLock lock(sum.object.mutex);
  const bool isAlone = sum.object.bytes == bytes_;
  if (sharesBudget && !isAlone && (bytes > budget || sum.object.bytes > budget - bytes)) throw std::bad_alloc();
  sum.object.bytes += bytes;
  bytes_ += bytes;
  reservation->bytes_ = bytes;
  return reservation;
}

void TRingMemory::Release(std::uint64_t bytes)
{
  const TLock lock(sum.object.mutex);
  sum.object.bytes -= bytes;
  bytes_ -= bytes;
}

std::uint64_t TRingMemory::BytesOfOthers() const
{
  const TLock lock(sum.object.mutex);
  return sum.object.bytes - bytes_;
}
