// SPDX-License-Identifier: MIT
// The record of the calls that reached the library.
#include "vxcore/front/TCallLog.h"

namespace vxcore {

TCallLog& TCallLog::Instance()
{
  static auto& log = *new TCallLog; // outlives every thread that may still call
  return log;
}

void TCallLog::Start(bool withWaits)
{
  Clear();
  withWaits_.store(withWaits, std::memory_order_relaxed);
  on_.store(true, std::memory_order_relaxed);
}

void TCallLog::Clear()
{
  const std::lock_guard lock(mutex_);
  lines_.clear();
}

void TCallLog::Append(std::string line)
{
  const std::lock_guard lock(mutex_);
  lines_.push_back(std::move(line));
}

size_t TCallLog::Count()
{
  const std::lock_guard lock(mutex_);
  return lines_.size();
}

bool TCallLog::Get(size_t index, std::string& line)
{
  const std::lock_guard lock(mutex_);
  if (index >= lines_.size()) return false;
  line = lines_[index];
  return true;
}

} // namespace vxcore
