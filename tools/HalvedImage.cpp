// SPDX-License-Identifier: MIT
// Means of 2 x 2 pixels.
#include "tools/HalvedImage.h"

#include <type_traits>

namespace vxtool {

namespace {

template <typename Pixel>
const Pixel* PixelsAt(const std::byte* bytes)
{
  return static_cast<const Pixel*>(static_cast<const void*>(bytes)); // buffers are aligned for any pixel
}

template <typename Pixel>
void Halve(TPixelBytes bytes, const TImageShape& shape, std::span<std::byte> halved)
{
  using Sum = std::conditional_t<sizeof(Pixel) < 4, std::uint32_t, std::int64_t>;
  const auto width = static_cast<std::size_t>(shape.width);
  const auto height = static_cast<std::size_t>(shape.height);
  const Pixel* const pixels = PixelsAt<Pixel>(bytes.data());
  auto* to = static_cast<Pixel*>(static_cast<void*>(halved.data()));
  for (std::size_t row = 0; row < height; row += 2) {
    // At the last of an odd number, a row or column counts twice, which does not change the mean.
    const Pixel* const upper = pixels + row * width;
    const Pixel* const lower = row + 1 < height ? upper + width : upper;
    for (std::size_t pair = 0; pair < width / 2; ++pair, ++to)
      *to = static_cast<Pixel>(
          (Sum{upper[2 * pair]} + upper[2 * pair + 1] + lower[2 * pair] + lower[2 * pair + 1] + 2) >> 2);
    if (width % 2 == 1) *to++ = static_cast<Pixel>((Sum{upper[width - 1]} + lower[width - 1] + 1) >> 1);
  }
}

} // namespace

TImageShape HalvedShape(const TImageShape& shape)
{
  return {(shape.width + 1) / 2, (shape.height + 1) / 2, shape.depth};
}

void HalveImage(TPixelBytes pixels, const TImageShape& shape, std::span<std::byte> halved)
{
  if (shape.depth == PixelDepth::Bits8) return Halve<std::uint8_t>(pixels, shape, halved);
  if (shape.depth == PixelDepth::Bits16) return Halve<std::uint16_t>(pixels, shape, halved);
  Halve<std::int32_t>(pixels, shape, halved);
}

} // namespace vxtool
