// SPDX-License-Identifier: MIT
// Reads every so many pixels; sorts as far as a quantile needs it.
#include "tools/TPixelSample.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>

namespace vxtool {

namespace {

template <typename Pixel>
std::vector<double> Values(TPixelBytes image, std::size_t mostPixels)
{
  const std::size_t count = image.size() / sizeof(Pixel);
  const std::size_t step = count / mostPixels + 1;
  std::vector<double> values;
  values.reserve(count / step + 1);
  for (std::size_t index = 0; index < count; index += step) {
    Pixel value;
    std::memcpy(&value, image.data() + index * sizeof value, sizeof value);
    values.push_back(value);
  }
  return values;
}

} // namespace

TPixelSample::TPixelSample(TPixelBytes image, PixelDepth depth, std::size_t mostPixels)
    : values_(depth == PixelDepth::Bits8    ? Values<std::uint8_t>(image, mostPixels)
              : depth == PixelDepth::Bits16 ? Values<std::uint16_t>(image, mostPixels)
                                            : Values<std::int32_t>(image, mostPixels))
{
}

double TPixelSample::Quantile(double part)
{
  const auto rank = std::lround(part * static_cast<double>(values_.size() - 1));
  std::nth_element(values_.begin(), values_.begin() + rank, values_.end());
  return values_[static_cast<std::size_t>(rank)];
}

} // namespace vxtool
