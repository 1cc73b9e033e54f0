// SPDX-License-Identifier: MIT
// Retrieval of frames with two 12-bit pixels in three bytes.
#include "retrieval/TPackedFetchImage.h"

#include "retrieval/TPixelKernels.h"

#include <type_traits>

template <class Src, class Dst>
void TPackedFetchImage<Src, Dst>::copyImage(Dst* destinationRow, unsigned char* sourceRow, int pixelCount)
{
  if (pixelCount < 1) return;
  const auto count = static_cast<std::size_t>(pixelCount);
  if constexpr (std::is_same_v<Dst, unsigned short>)
    TPixelKernels::Active().packed12To16(destinationRow, sourceRow, count);
  else
    TPixelKernels::Active().packed12To32(destinationRow, sourceRow, count);
}

template <class Src, class Dst>
std::int64_t TPackedFetchImage<Src, Dst>::sourceRowBytes(std::int64_t pixelCount) const
{
  return pixelCount / 2 * 3 + (pixelCount % 2 != 0 ? 2 : 0);
}

template class TPackedFetchImage<unsigned char, unsigned short>;
template class TPackedFetchImage<unsigned char, int>;
