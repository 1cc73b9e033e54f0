// SPDX-License-Identifier: MIT
// The conversion kernels in plain C++; the compiler vectorises what it can.
#include "retrieval/TPixelKernels.h"

#include <cstdint>
#include <cstring>

namespace {

// Rows of an odd stride are not aligned.
template <class Pixel>
Pixel loadPixel(const unsigned char* source)
{
  Pixel pixel;
  std::memcpy(&pixel, source, sizeof(pixel));
  return pixel;
}

void copyBytes(unsigned char* destination, const unsigned char* source, std::size_t byteCount)
{
  std::memcpy(destination, source, byteCount);
}

template <class Stored, class Dst>
void convert(Dst* destination, const unsigned char* source, std::size_t pixelCount)
{
  for (std::size_t i = 0; i < pixelCount; ++i)
    destination[i] = static_cast<Dst>(loadPixel<Stored>(source + i * sizeof(Stored)));
}

template <class Dst>
void unpack12(Dst* destination, const unsigned char* source, std::size_t pixelCount)
{
  for (std::size_t pair = 0; pair < pixelCount / 2; ++pair) {
    const unsigned char* group = source + 3 * pair;
    destination[2 * pair] = static_cast<Dst>(group[0] << 4 | (group[1] & 15));
    destination[2 * pair + 1] = static_cast<Dst>(group[2] << 4 | group[1] >> 4);
  }
  if (pixelCount % 2 != 0) {
    const unsigned char* group = source + pixelCount / 2 * 3;
    destination[pixelCount - 1] = static_cast<Dst>(group[0] << 4 | (group[1] & 15));
  }
}

} // namespace

constinit const TPixelKernels kPortablePixelKernels = {
    .copyBytes = copyBytes,
    .mono8To16 = convert<std::uint8_t, unsigned short>,
    .mono8To32 = convert<std::uint8_t, int>,
    .mono16To32 = convert<std::uint16_t, int>,
    .mono32To16 = convert<std::uint32_t, unsigned short>,
    .packed12To16 = unpack12<unsigned short>,
    .packed12To32 = unpack12<int>,
};
