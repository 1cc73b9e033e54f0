// SPDX-License-Identifier: MIT
// Retrieval of frames whose pixels are whole bytes, words or double words.
#pragma once

#include "retrieval/TFetchImage.h"

/// The fetcher for "Mono8", "Mono12", "Mono16" and "Mono32" frames: same-type rows are copied as they are,
/// narrower pixels are zero-extended, and "Mono32" to 16 bits keeps the low 16. See TFetchImage.
template <class Src, class Dst>
class TUnpackedFetchImage final : public TFetchImage<Src, Dst>
{
public:
  using TFetchImage<Src, Dst>::TFetchImage;
  void copyImage(Dst* destinationRow, unsigned char* sourceRow, int pixelCount) override;
};

extern template class TUnpackedFetchImage<unsigned char, unsigned char>;
extern template class TUnpackedFetchImage<unsigned char, unsigned short>;
extern template class TUnpackedFetchImage<unsigned char, int>;
extern template class TUnpackedFetchImage<unsigned short, unsigned short>;
extern template class TUnpackedFetchImage<unsigned short, int>;
extern template class TUnpackedFetchImage<int, unsigned short>;
extern template class TUnpackedFetchImage<int, int>;
