// SPDX-License-Identifier: MIT
// What has other values in a replay than in the recording.
#include "tools/replay/TReplayObjects.h"

namespace vxtool {

std::int64_t TReplayObjects::Replayed(const std::string& kind, std::int64_t recorded) const
{
  const std::lock_guard lock(mutex_);
  const auto found = values_.find({kind, recorded});
  return found == values_.end() ? recorded : found->second;
}

bool TReplayObjects::Matches(const std::string& kind, std::int64_t recorded, std::int64_t replayed, bool isNew)
{
  const std::lock_guard lock(mutex_);
  const auto found = values_.find({kind, recorded});
  if (found != values_.end()) return found->second == replayed;
  if (!isNew) return recorded == replayed;
  values_.emplace(std::pair(kind, recorded), replayed);
  return true;
}

void* TReplayObjects::Context(std::int64_t number)
{
  const std::lock_guard lock(mutex_);
  return &contexts_[number];
}

} // namespace vxtool
