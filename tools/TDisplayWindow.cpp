// SPDX-License-Identifier: MIT
// Quantiles of a sample.
#include "tools/TDisplayWindow.h"

#include <algorithm>
#include <cstring>

namespace vxtool {

namespace {

constexpr double kBlackQuantile = 0.001;
constexpr double kWhiteQuantile = 0.9995;
constexpr std::size_t kMaxSample = 16384;

template <typename Pixel>
std::vector<double> Sample(TPixelBytes image)
{
  const std::size_t count = image.size() / sizeof(Pixel);
  const std::size_t step = count / kMaxSample + 1;
  std::vector<double> sample;
  for (std::size_t index = 0; index < count; index += step) {
    Pixel value;
    std::memcpy(&value, image.data() + index * sizeof value, sizeof value);
    sample.push_back(value);
  }
  return sample;
}

double Quantile(std::vector<double>& sample, double quantile)
{
  const auto index = static_cast<std::ptrdiff_t>(quantile * static_cast<double>(sample.size() - 1));
  std::nth_element(sample.begin(), sample.begin() + index, sample.end());
  return sample[static_cast<std::size_t>(index)];
}

} // namespace

void TDisplayWindow::Add(TPixelBytes image, PixelDepth depth)
{
  std::vector<double> sample = depth == PixelDepth::Bits8    ? Sample<std::uint8_t>(image)
                               : depth == PixelDepth::Bits16 ? Sample<std::uint16_t>(image)
                                                             : Sample<std::int32_t>(image);
  if (sample.empty()) return;
  const double black = Quantile(sample, kBlackQuantile);
  const double white = Quantile(sample, kWhiteQuantile);
  start_ = isEmpty_ ? black : std::min(start_, black);
  end_ = isEmpty_ ? white : std::max(end_, white);
  isEmpty_ = false;
}

} // namespace vxtool
