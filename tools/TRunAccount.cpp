// SPDX-License-Identifier: MIT
// The books of a run: entries and the closing balance.
#include "tools/TRunAccount.h"

#include <algorithm>

namespace vxtool {

void TRunAccount::EnterFetched(bool isWritten)
{
  ++totals_.fetched;
  ++(isWritten ? totals_.written : totals_.notWritten);
}

void TRunAccount::Timestamp(long long ticks)
{
  gaps_.Add(ticks);
  ++timestamps_;
}

void TRunAccount::TakeBackWritten(long count)
{
  totals_.written -= count;
  totals_.notWritten += count;
}

void TRunAccount::Finish(long delivered)
{
  totals_.delivered = delivered;
  totals_.notFetched = delivered - LastImage();
  totals_.withoutTimestamp = std::max(0L, delivered - timestamps_);
  // An image without a timestamp leaves a gap too, and is not lost.
  if (isPaced_ && timestamps_ > 0) totals_.lostInCamera = std::max(0L, gaps_.Missing() - totals_.withoutTimestamp);
}

bool TRunAccount::AddsUp() const
{
  const TRunTotals& t = totals_;
  return t.delivered == t.fetched + t.overwritten + t.notFetched && t.fetched == t.written + t.notWritten &&
         t.notFetched >= 0 && t.written >= 0 && t.notWritten >= 0;
}

} // namespace vxtool
