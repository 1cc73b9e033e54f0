// SPDX-License-Identifier: MIT
// One place of a spool file.
#pragma once

#include "spool/IImage.h"

#include <cstdint>

/// One place of a file, at a fixed position. Borrows the file image, which must take a Lock() for each of its
/// places at once. Its state never changes, so it is as thread-safe as the file image. The constructor throws
/// TSDK3Exception; the operations pass on what the file image returns.
class TOffsetMultiImage final : public IImage
{
public:
  /// @p position counts images of that size from the start of the file.
  TOffsetMultiImage(IImage* file, std::uint64_t imageSizeBytes, unsigned int position);

  int Lock(unsigned char*& destination) override;
  int Unlock() override;

private:
  IImage* const file_;
  const std::uint64_t imageSizeBytes_;
  const unsigned int position_;
};
