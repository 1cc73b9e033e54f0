// SPDX-License-Identifier: MIT
// The places of a spool file, one after another.
#pragma once

#include "spool/IMultiImage.h"
#include "utility/TQuorinCriticalSection.h"

#include <cstdint>

/// Hands out the places of one file, one with each Lock(). The file is locked by the first and unlocked by the
/// last of imagesPerFile unlocks. Borrows the file image. Thread-safe. Constructor, Lock() and Unlock() throw
/// TSDK3Exception for wrong use; else they pass on what the file image returns.
class TSerialMultiImage final : public IMultiImage
{
public:
  TSerialMultiImage(IImage* file, std::uint64_t imageSizeBytes, unsigned int imagesPerFile);

  int Lock(unsigned char*& destination) override;
  int Unlock() override;
  /// Unlocks the file whatever has been counted.
  int ForceUnlock() override;

private:
  IImage* const file_;
  const std::uint64_t imageSizeBytes_;
  const unsigned int imagesPerFile_;
  unsigned int lockCount_ = 0; // guarded by lock_, as are the next two
  unsigned int unlockCount_ = 0;
  unsigned char* nextDestination_ = nullptr;
  QuorinUtility::TQuorinCriticalSection lock_;
};
