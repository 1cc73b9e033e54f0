// SPDX-License-Identifier: MIT
// A place in a spool file that is filled in memory and written as a whole.
#pragma once

#include "spool/IImage.h"

#include <cstddef>
#include <cstdint>

class TSpoolFile;
class TStagingPool;

/// A place in a spool file that is filled in a piece of staging memory and written to the file when it is
/// unlocked. The memory lies with regard to alignment as the place does in the file, so that it can be written
/// unbuffered. Borrows file and pool. One thread at a time.
class TStagedImage final : public IImage
{
public:
  /// Memory that a pool's pieces need for places of @p sizeBytes.
  static std::size_t PieceBytes(std::size_t sizeBytes);

  TStagedImage(TSpoolFile* file, TStagingPool* pool, std::size_t sizeBytes, std::uint64_t offset);
  ~TStagedImage() override;
  TStagedImage(const TStagedImage&) = delete;
  TStagedImage& operator=(const TStagedImage&) = delete;

  int Lock(unsigned char*& destination) override;
  int Unlock() override;
  /// Writes the bytes from @p begin to @p end of the place ahead of time. Unlock() writes all of it all the same.
  int WritePart(std::uint64_t begin, std::uint64_t end);

private:
  unsigned char* Memory() const;

  TSpoolFile* file_;
  TStagingPool* pool_;
  const std::size_t sizeBytes_;
  const std::uint64_t offset_;
  unsigned char* piece_ = nullptr;
};
