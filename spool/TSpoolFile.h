// SPDX-License-Identifier: MIT
// One file of a spooled run.
#pragma once

#include "spool/IImage.h"
#include "spool/TFileDescriptor.h"
#include "spool/TSpoolVolume.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <string>

/// One file of a spooled run, full size from the beginning. Its blocks are set aside when it is made, so that a
/// full disk shows there, as an error, and not as a signal in the middle of a frame. Images reach it in one of two
/// ways: Lock() gives the memory of the whole file, mapped, to those who write into it; Write() is for those who
/// have the image elsewhere, and does not go through the page cache where the file system allows that. Owned by
/// the file spooler. All operations but Create() and Close() are thread-safe, for different parts of the file.
/// Errors are errno values, 0 is success.
class TSpoolFile final : public IImage
{
public:
  /// What is written or synced at once.
  static constexpr std::uint64_t kPieceBytes = std::uint64_t{8} << 20;

  /// Numbers from 0. @p sizeBytes is what the file will hold. @p progress, which is borrowed, is counted up with each
  /// piece that is written or synced.
  TSpoolFile(std::string path, unsigned int number, std::uint64_t sizeBytes, std::atomic<std::uint64_t>* progress);
  ~TSpoolFile() override;
  TSpoolFile(const TSpoolFile&) = delete;
  TSpoolFile& operator=(const TSpoolFile&) = delete;

  /// Makes the file, which must not exist. On failure nothing is left of it.
  int Create(const TSpoolVolume& volume);
  /// Closes the file. A large one is brought to the disk first; small ones are many, and each would cost as much
  /// as a large one, so they are brought there together, at the end of the run.
  int Close();

  static constexpr std::uint64_t kLargeFileBytes = std::uint64_t{64} << 20;

  /// Maps the file at the first call. Returns 0, or an errno value.
  int Lock(unsigned char*& destination) override;
  int Unlock() override { return 0; }

  /// Writes @p size bytes at @p offset. Unbuffered where @p data and @p offset lie alike with regard to
  /// TSpoolVolume::kAlignment.
  int Write(const unsigned char* data, std::size_t size, std::uint64_t offset);

  /// Says that this part of the file has got its final content, and lets its way from the page cache to the disk
  /// begin, so that little is left to do when the file is closed.
  void PartDone(std::uint64_t offset, std::uint64_t size);
  /// Whether every byte has got its final content.
  bool IsFull() const { return doneBytes_ >= sizeBytes_; }

  unsigned int Number() const { return number_; }
  const std::string& Path() const { return path_; }

private:
  int Preallocate(const TSpoolVolume& volume);
  int WritePieces(int file, const unsigned char* data, std::size_t size, std::uint64_t offset);
  int Sync();

  const std::string path_;
  const unsigned int number_;
  const std::uint64_t sizeBytes_;
  std::atomic<std::uint64_t>* const progress_;
  TFileDescriptor file_;
  TFileDescriptor direct_; // the same file, unbuffered, if that is possible
  std::atomic<std::uint64_t> doneBytes_{0};
  std::mutex mutex_;
  unsigned char* memory_ = nullptr; // guarded by mutex_
};
