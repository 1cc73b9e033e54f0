// SPDX-License-Identifier: MIT
// Retrieval of frames with two 12-bit pixels in three bytes.
#pragma once

#include "retrieval/TFetchImage.h"

/// The fetcher for "Mono12Packed" frames. See TFetchImage; TPixelKernels describes the packing.
template <class Src, class Dst>
class TPackedFetchImage final : public TFetchImage<Src, Dst>
{
public:
  using TFetchImage<Src, Dst>::TFetchImage;
  void copyImage(Dst* destinationRow, unsigned char* sourceRow, int pixelCount) override;

private:
  std::int64_t sourceRowBytes(std::int64_t pixelCount) const override;
};

extern template class TPackedFetchImage<unsigned char, unsigned short>;
extern template class TPackedFetchImage<unsigned char, int>;
