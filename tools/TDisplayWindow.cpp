// SPDX-License-Identifier: MIT
// Quantiles of a sample.
#include "tools/TDisplayWindow.h"

#include "tools/TPixelSample.h"

namespace vxtool {

namespace {

constexpr std::size_t kMaxSample = 16384;

} // namespace

void TDisplayWindow::Add(TPixelBytes image, PixelDepth depth)
{
  TPixelSample sample(image, depth, kMaxSample);
  if (sample.IsEmpty()) return;
  const double black = sample.Quantile(kBlackQuantile);
  const double white = sample.Quantile(kWhiteQuantile);
  start_ = isEmpty_ ? black : std::min(start_, black);
  end_ = isEmpty_ ? white : std::max(end_, white);
  isEmpty_ = false;
}

} // namespace vxtool
