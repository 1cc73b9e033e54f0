// SPDX-License-Identifier: MIT
// Percentiles from a sample of the image, then one pass over it.
#include "tools/StretchImage.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>

namespace vxtool {

namespace {

constexpr double kBlackQuantile = 0.001;
constexpr double kWhiteQuantile = 0.9995;
constexpr double kFaintMedian = 0.1;
constexpr double kAsinhStrength = 50.0;
constexpr std::size_t kSampleSize = 1'000'000;

double Quantile(std::vector<double>& sample, double quantile)
{
  const auto index = std::lround(quantile * static_cast<double>(sample.size() - 1));
  std::nth_element(sample.begin(), sample.begin() + index, sample.end());
  return sample[static_cast<std::size_t>(index)];
}

template <typename Pixel>
std::vector<unsigned char> Stretch(TPixelBytes bytes)
{
  const std::size_t count = bytes.size() / sizeof(Pixel);
  if (count == 0) return {};
  const auto pixelAt = [bytes](std::size_t index) {
    Pixel value;
    std::memcpy(&value, bytes.data() + index * sizeof(Pixel), sizeof value);
    return static_cast<double>(value);
  };
  std::vector<double> sample;
  const std::size_t step = count / kSampleSize + 1;
  for (std::size_t index = 0; index < count; index += step) sample.push_back(pixelAt(index));
  const double black = Quantile(sample, kBlackQuantile);
  const double white = std::max(Quantile(sample, kWhiteQuantile), black + 1.0);
  const bool isFaint = (Quantile(sample, 0.5) - black) / (white - black) < kFaintMedian;

  std::vector<unsigned char> grey(count);
  for (std::size_t index = 0; index < count; ++index) {
    const double linear = std::clamp((pixelAt(index) - black) / (white - black), 0.0, 1.0);
    const double level = isFaint ? std::asinh(kAsinhStrength * linear) / std::asinh(kAsinhStrength) : linear;
    grey[index] = static_cast<unsigned char>(std::lround(255.0 * level));
  }
  return grey;
}

} // namespace

std::vector<unsigned char> StretchImage(TPixelBytes pixels, PixelDepth depth)
{
  if (depth == PixelDepth::Bits8) return Stretch<std::uint8_t>(pixels);
  return depth == PixelDepth::Bits16 ? Stretch<std::uint16_t>(pixels) : Stretch<std::int32_t>(pixels);
}

} // namespace vxtool
