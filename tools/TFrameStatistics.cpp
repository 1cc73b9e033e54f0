// SPDX-License-Identifier: MIT
// Frame counts, and how they fit together.
#include "tools/TFrameStatistics.h"

#include <algorithm>

namespace vxtool {

void TFrameStatistics::AddFetched(bool isWritten)
{
  ++counts_.fetched;
  ++(isWritten ? counts_.written : counts_.notWritten);
}

void TFrameStatistics::AddTimestamp(long long ticks)
{
  gaps_.Add(ticks);
  ++timestamps_;
}

void TFrameStatistics::AddClipped(long pixels, long images)
{
  counts_.clippedPixels += pixels;
  counts_.clippedImages += images;
}

void TFrameStatistics::MoveToNotWritten(long count)
{
  counts_.written -= count;
  counts_.notWritten += count;
}

void TFrameStatistics::AddRun(const TFrameCounts& run, long lostInCamera)
{
  counts_.lostInCamera = counts_.lostInCamera.value_or(0) + lostInCamera;
  counts_.delivered += run.delivered;
  counts_.overwritten += run.overwritten;
  counts_.notFetched += run.notFetched;
  counts_.fetched += run.fetched;
  counts_.written += run.written;
  counts_.notWritten += run.notWritten;
  counts_.withoutTimestamp += run.withoutTimestamp;
  counts_.clippedImages += run.clippedImages;
  counts_.clippedPixels += run.clippedPixels;
}

void TFrameStatistics::Finish(long delivered, std::optional<long> lost)
{
  counts_.delivered = delivered;
  counts_.notFetched = delivered - LastImage();
  counts_.withoutTimestamp = std::max(0L, delivered - timestamps_);
  // An image without a timestamp leaves a gap too, and is not lost.
  if (hasSteadyRate_ && lost)
    counts_.lostInCamera = lost;
  else if (hasSteadyRate_ && timestamps_ > 0)
    counts_.lostInCamera = std::max(0L, gaps_.Missing() - counts_.withoutTimestamp);
}

bool TFrameStatistics::AddsUp() const
{
  const TFrameCounts& c = counts_;
  return c.delivered == c.fetched + c.overwritten + c.notFetched && c.fetched == c.written + c.notWritten &&
         c.notFetched >= 0 && c.written >= 0 && c.notWritten >= 0;
}

} // namespace vxtool
