// SPDX-License-Identifier: MIT
// One file of a spooled run, and what its file system can do.
#pragma once

#include "spool/ISpooler.h"
#include "utility/file_access.h"
#include "utility/TMutex.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string>

class TSpoolFault;

/// What the file system under a spool directory can do. A plain value.
struct TSpoolVolume
{
  /// Memory and file offsets of unbuffered writes are multiples of this.
  static constexpr std::size_t kAlignment = 4096;

  bool writesDirectly = false; ///< supports unbuffered writes
  bool preallocates = false;   ///< can reserve a file's blocks before they are written

  /// Tries them on a file without a name in @p directory. Where that is not possible either, the answer is no.
  static TSpoolVolume Probe(const std::string& directory);
};

/// One file of a spooled run, full size from the beginning. Its blocks are allocated when it is made, so that a full
/// disk shows there; where they do not fit, the blocks of each image are allocated before the image is accepted. Images
/// are written, never mapped: a disk that fails, or a file that is truncated meanwhile, must not end the program by a
/// signal. Large ones do not go through the page cache where the file system allows that. Owned by the file spooler. All
/// operations but Create() and Close() are thread-safe, for different parts of the file. Errors are errno values, 0 is
/// success.
class TSpoolFile final : public IImage
{
public:
  /// Written or synced by one call.
  static constexpr std::uint64_t kPieceBytes = std::uint64_t{8} << 20;
  /// Smaller files are synced and closed many at a time: the sync of the first does most of the work for all.
  static constexpr std::uint64_t kLargeFileBytes = std::uint64_t{64} << 20;

  /// How large a file is, in bytes.
  struct TSizes
  {
    std::uint64_t length = 0;
    std::uint64_t used = 0;  ///< of these, what the run will fill
    std::uint64_t image = 0; ///< what a file must have room for at least
  };

  /// Numbers from 0. @p progress, which is borrowed, is incremented with each piece that is written or synced.
  TSpoolFile(std::string path, unsigned int number, const TSizes& sizes, std::atomic<std::uint64_t>* progress);

  /// Makes the file, which must not exist. Removes it again on failure, also when there is no room for an image.
  int Create(const TSpoolVolume& volume);
  /// Syncs and closes the file.
  int Close();

  /// Not supported: the file is not memory.
  int Lock(unsigned char*& destination) override;
  int Unlock() override { return 0; }

  /// Allocates the blocks of @p size bytes at @p offset, unless Create() could allocate those of the whole file.
  int Reserve(std::uint64_t offset, std::uint64_t size);
  /// Writes @p size bytes at @p offset. Unbuffered where @p data and @p offset are equally far from a multiple of
  /// TSpoolVolume::kAlignment.
  int Write(const unsigned char* data, std::size_t size, std::uint64_t offset);
  /// Counts more of the run's images as written. Starts the write-back of this part of the file, so that little is
  /// left to do when the file is closed. With the last of them IsFull() becomes true.
  void ImagesWritten(std::uint32_t images, std::uint64_t offset, std::uint64_t size);
  /// Syncs what has been written since the last call. After a failure, all later calls fail as well.
  int Sync();

  /// Whether all of the run's images that belong in this file are written.
  bool IsFull() const { return writtenBytes_ >= sizes_.used; }
  bool IsLarge() const { return sizes_.length >= kLargeFileBytes; }
  /// Whether the file still has its name and its length. If not, the fault is raised.
  bool IsAsMade(TSpoolFault* fault) const;
  /// Images that are known to be on the disk.
  std::uint32_t SyncedImages() const { return syncedImages_; }

  unsigned int Number() const { return number_; }
  const std::string& Path() const { return path_; }

private:
  int Preallocate();
  int Allocate(std::uint64_t offset, std::uint64_t size);
  int WritePieces(int file, const unsigned char* data, std::size_t size, std::uint64_t offset);
  int SyncPieces() REQUIRES(syncMutex_);

  const std::string path_;
  const unsigned int number_;
  const TSizes sizes_;
  std::atomic<std::uint64_t>* const progress_;
  TFileDescriptor file_;
  TFileDescriptor direct_;      // the same file, unbuffered, if that is possible
  bool reservesImages_ = false; // one by one, since the disk had no room for all
  std::atomic<std::uint64_t> writtenBytes_{0};
  std::atomic<std::uint32_t> writtenImages_{0};
  std::atomic<std::uint32_t> syncedImages_{0};
  TMutex syncMutex_;
  int syncError_ GUARDED_BY(syncMutex_) = 0; // of the first sync that failed
};
