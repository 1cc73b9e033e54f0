// SPDX-License-Identifier: MIT
// Looks at the files again.
#include "tools/TRunFollower.h"

namespace vxtool {

TRunFollower::TRunFollower(TRunDescription& run, TRunIndex& index, double patienceSeconds)
    : run_(run), index_(index), patience_(patienceSeconds), grown_(Clock::now())
{
}

Growth TRunFollower::Update()
{
  // First the description: with a final one, the index is complete.
  TRunDescription latest;
  const bool isRead = latest.Read(run_.Directory());
  if (isRead ? latest.Values().startTime != run_.Values().startTime : latest.IsMissing()) return Growth::Replaced;
  if (isRead && latest.Values().state != RunFormat::State::kRecording) {
    run_ = latest;
    index_.Read(run_.Directory(), run_.ImageLimit());
    return Growth::Ended;
  }
  const std::int64_t before = index_.Count();
  index_.ReadAdded(run_.Directory(), run_.ImageLimit());
  const Clock::time_point now = Clock::now();
  if (index_.Count() > before) grown_ = now;
  return now - grown_ < patience_ ? Growth::Recording : Growth::Stalled;
}

} // namespace vxtool
