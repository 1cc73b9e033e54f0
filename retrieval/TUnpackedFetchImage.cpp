// SPDX-License-Identifier: MIT
// Retrieval of frames whose pixels are whole bytes, words or double words.
#include "retrieval/TUnpackedFetchImage.h"

#include "retrieval/TPixelKernels.h"

#include <type_traits>

namespace {

void convert(unsigned short* destination, const unsigned char* source, std::size_t count, unsigned char)
{
  TPixelKernels::Active().mono8To16(destination, source, count);
}

void convert(int* destination, const unsigned char* source, std::size_t count, unsigned char)
{
  TPixelKernels::Active().mono8To32(destination, source, count);
}

void convert(int* destination, const unsigned char* source, std::size_t count, unsigned short)
{
  TPixelKernels::Active().mono16To32(destination, source, count);
}

void convert(unsigned short* destination, const unsigned char* source, std::size_t count, int)
{
  TPixelKernels::Active().mono32To16(destination, source, count);
}

} // namespace

template <class Src, class Dst>
void TUnpackedFetchImage<Src, Dst>::copyImage(Dst* destinationRow, unsigned char* sourceRow, int pixelCount)
{
  if (pixelCount < 1) return;
  const auto count = static_cast<std::size_t>(pixelCount);
  if constexpr (std::is_same_v<Src, Dst>)
    TPixelKernels::Active().copyBytes(reinterpret_cast<unsigned char*>(destinationRow), sourceRow,
                                      count * sizeof(Dst));
  else
    convert(destinationRow, sourceRow, count, Src{});
}

template class TUnpackedFetchImage<unsigned char, unsigned char>;
template class TUnpackedFetchImage<unsigned char, unsigned short>;
template class TUnpackedFetchImage<unsigned char, int>;
template class TUnpackedFetchImage<unsigned short, unsigned short>;
template class TUnpackedFetchImage<unsigned short, int>;
template class TUnpackedFetchImage<int, unsigned short>;
template class TUnpackedFetchImage<int, int>;
