// SPDX-License-Identifier: MIT
// The two views of one place in a spool file that is memory while it is locked.
#pragma once

#include "spool/ISpooler.h"
#include "utility/TQuorinCriticalSection.h"

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

/// Logs @p text and throws it as a TSDK3Exception.
[[noreturn]] void LogAndThrow(const char* file, int line, const char* function, const char* text);

/// Logs one text and throws the other as a TSDK3Exception. The two differ by a little here and there; kept for
/// whoever searches for them.
[[noreturn]] void LogAndThrow(const char* file, int line, const char* function, const char* logged,
                              const char* thrown);
