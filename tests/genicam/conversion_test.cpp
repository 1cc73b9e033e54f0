// SPDX-License-Identifier: MIT
// Every format of pixels into every encoding that it serves for, with odd sizes, cut-out parts and padded rows, compared
// with plain arithmetic on single bits. Buffers have exactly the size that is needed.
#include "vxcore/genicam/TFrameConverter.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <memory>
#include <random>

namespace {

using namespace vxgenicam;

/// The value at a bit of a little-endian bit stream.
std::uint32_t BitsAt(const unsigned char* bytes, std::size_t bit, int count)
{
  std::uint32_t value = 0;
  for (int index = 0; index < count; ++index)
    value |= static_cast<std::uint32_t>(bytes[(bit + static_cast<std::size_t>(index)) / 8] >>
                                            ((bit + static_cast<std::size_t>(index)) % 8) &
                                        1)
             << index;
  return value;
}

/// A pixel of a row that begins at a bit.
std::uint32_t FramePixel(const TFrameShape& shape, const unsigned char* sent, std::size_t row, std::size_t column)
{
  const auto bits = static_cast<std::size_t>(BitsOf(shape.format));
  const std::size_t rowBits =
      shape.rowPadding > 0 ? ((shape.width * bits + 7) / 8 + shape.rowPadding) * 8 : shape.width * bits;
  const std::size_t start = row * rowBits;
  if (shape.format != EPixelFormat::Mono12Packed)
    return BitsAt(sent, start + column * bits, static_cast<int>(bits));
  // The pixel's byte of high bits, and its half of the byte between the two.
  const std::size_t pixel = start / 12 + column;
  const unsigned char* const group = sent + (shape.rowPadding > 0 ? start / 8 + column / 2 * 3 : pixel / 2 * 3);
  const bool isSecond = (shape.rowPadding > 0 ? column : pixel) % 2 != 0;
  return static_cast<std::uint32_t>(isSecond ? group[2] << 4 | group[1] >> 4 : group[0] << 4 | (group[1] & 15));
}

std::uint32_t ImagePixel(EEncoding encoding, const unsigned char* row, std::size_t column)
{
  switch (encoding) {
  case EEncoding::Mono8:
    return row[column];
  case EEncoding::Mono12Packed: {
    const unsigned char* const group = row + column / 2 * 3;
    return static_cast<std::uint32_t>(column % 2 != 0 ? group[2] << 4 | group[1] >> 4
                                                      : group[0] << 4 | (group[1] & 15));
  }
  case EEncoding::Mono32:
    return BitsAt(row, column * 32, 32);
  default:
    return BitsAt(row, column * 16, 16);
  }
}

TEST(GenICamConversion, GivesThePixelsOfTheWire)
{
  std::mt19937 random(1);
  const auto below = [&random](std::size_t limit) { return random() % limit; };
  for (int index = 0; index < kEncodingCount; ++index) {
    const auto encoding = static_cast<EEncoding>(index);
    for (const EPixelFormat format : SourcesOf(encoding)) {
      for (int round = 0; round < 60; ++round) {
        const TFrameShape shape{format, 1 + below(150), 1 + below(6), round % 3 == 0 ? 1 + below(5) : 0};
        TCrop crop{below(shape.width), below(shape.height), 0, 0};
        if (round % 2 == 0) crop = {};
        crop.width = round % 4 == 0 ? shape.width : 1 + below(shape.width - crop.left);
        crop.height = round % 4 == 0 ? shape.height : 1 + below(shape.height - crop.top);
        const auto sent = std::make_unique<unsigned char[]>(shape.Bytes());
        std::generate_n(sent.get(), shape.Bytes(), [&random] { return static_cast<unsigned char>(random()); });
        if (format == EPixelFormat::Mono10 || format == EPixelFormat::Mono12 || format == EPixelFormat::Mono14)
          for (std::size_t pixel = 0; pixel < shape.width * shape.height;
               ++pixel) // values within every one's range
            sent[pixel * 2 + pixel / shape.width * shape.rowPadding + 1] &= 3;
        TFrameConverter converter(shape, crop, encoding);
        const auto image = std::make_unique<unsigned char[]>(converter.ImageBytes());
        const auto sums = std::make_unique<unsigned char[]>(converter.ImageBytes());
        converter.Convert(sent.get(), image.get());
        for (int frame = 0; frame < 3; ++frame) converter.Add(sent.get());
        converter.TakeSums(sums.get());
        const std::size_t stride = StrideOf(encoding, crop.width);
        for (std::size_t y = 0; y < crop.height; ++y)
          for (std::size_t x = 0; x < crop.width; ++x) {
            const std::uint32_t value = FramePixel(shape, sent.get(), crop.top + y, crop.left + x);
            ASSERT_EQ(ImagePixel(encoding, image.get() + y * stride, x), value)
                << NameOf(format) << " " << index << " " << shape.width << "x" << shape.height << " " << x << ","
                << y;
            ASSERT_EQ(ImagePixel(encoding, sums.get() + y * stride, x), std::min(3 * value, MaximumOf(encoding)));
          }
      }
    }
  }
}

} // namespace
