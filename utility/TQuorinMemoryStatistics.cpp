// SPDX-License-Identifier: MIT
// How much memory the machine has and has free.
#include "utility/TQuorinMemoryStatistics.h"

#include <cstdlib>
#include <memory>
#include <sys/sysinfo.h>

namespace QuorinUtility {

namespace {

/// What the system says now; all zero when it refuses.
struct sysinfo ReadSystem()
{
  struct sysinfo system = {};
  if (sysinfo(&system) != 0) system = {};
  return system;
}

std::uint64_t Bytes(std::uint64_t units, const struct sysinfo& system)
{
  return units * system.mem_unit;
}

} // namespace

std::atomic<TQuorinMemoryStatistics*> TQuorinMemoryStatistics::mInstance{nullptr};
const bool TQuorinMemoryStatistics::createdAtLoad_ = CreateAtLoad();

TQuorinMemoryStatistics* TQuorinMemoryStatistics::Instance()
{
  TQuorinMemoryStatistics* instance = mInstance.load(std::memory_order_acquire);
  if (instance) return instance;
  std::unique_ptr<TQuorinMemoryStatistics> made(new TQuorinMemoryStatistics);
  if (!mInstance.compare_exchange_strong(instance, made.get(), std::memory_order_acq_rel)) return instance;
  return made.release();
}

bool TQuorinMemoryStatistics::CreateAtLoad()
{
  Instance();
  return std::atexit(DeleteInstance) == 0;
}

void TQuorinMemoryStatistics::DeleteInstance()
{
  delete mInstance.exchange(nullptr, std::memory_order_acq_rel);
}

std::uint64_t TQuorinMemoryStatistics::GetTotalPhysical() const
{
  const struct sysinfo system = ReadSystem();
  return Bytes(system.totalram, system);
}

std::uint64_t TQuorinMemoryStatistics::GetAvailablePhysical() const
{
  const struct sysinfo system = ReadSystem();
  return Bytes(system.freeram, system);
}

std::uint64_t TQuorinMemoryStatistics::GetTotalSwap() const
{
  const struct sysinfo system = ReadSystem();
  return Bytes(system.totalswap, system);
}

std::uint64_t TQuorinMemoryStatistics::GetAvailableSwap() const
{
  const struct sysinfo system = ReadSystem();
  return Bytes(system.freeswap, system);
}

std::uint64_t TQuorinMemoryStatistics::GetTotal() const
{
  const struct sysinfo system = ReadSystem();
  return Bytes(std::uint64_t{system.totalram} + system.totalswap, system);
}

std::uint64_t TQuorinMemoryStatistics::GetAvailable() const
{
  const struct sysinfo system = ReadSystem();
  return Bytes(std::uint64_t{system.freeram} + system.freeswap, system);
}

} // namespace QuorinUtility
