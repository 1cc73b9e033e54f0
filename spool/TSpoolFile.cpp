// SPDX-License-Identifier: MIT
// One file of a spooled run, and what its file system can do.
#include "spool/TSpoolFile.h"

#include "spool/TSpoolFault.h"
#include "utility/file_access.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <fcntl.h>
#include <unistd.h>
#include <utility>

namespace {

constexpr std::size_t kAlignment = TSpoolVolume::kAlignment;

// Smaller files are synced at once after they are written, which costs the same again for an unbuffered write.
constexpr std::uint64_t kDirectFileBytes = std::uint64_t{256} << 10;

std::size_t BytesToAlignment(std::uint64_t offset)
{
  return static_cast<std::size_t>((kAlignment - offset % kAlignment) % kAlignment);
}

bool IsAlignedAlike(const unsigned char* data, std::uint64_t offset)
{
  return reinterpret_cast<std::uintptr_t>(data) % kAlignment == offset % kAlignment;
}

} // namespace

TSpoolVolume TSpoolVolume::Probe(const std::string& directory)
{
  TSpoolVolume volume;
  if (CheckFileSizeLimit(kAlignment) != 0) return volume;

  const TFileDescriptor buffered(open(directory.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0600));
  volume.preallocates = buffered.IsOpen() && fallocate(buffered.Get(), 0, 0, kAlignment) == 0;

  const TFileDescriptor direct(open(directory.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC | O_DIRECT, 0600));
  alignas(kAlignment) static const std::array<char, kAlignment> block{};
  volume.writesDirectly =
      direct.IsOpen() && pwrite(direct.Get(), block.data(), block.size(), 0) == static_cast<ssize_t>(block.size());
  return volume;
}

TSpoolFile::TSpoolFile(std::string path, unsigned int number, const TSizes& sizes,
                       std::atomic<std::uint64_t>* progress)
    : path_(std::move(path)), number_(number), sizes_(sizes), progress_(progress)
{
}

int TSpoolFile::Create(const TSpoolVolume& volume)
{
  if (const int error = CheckFileSizeLimit(sizes_.length)) return error;
  file_ = TFileDescriptor(open(path_.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
  if (!file_.IsOpen()) return errno;
  int error = ftruncate(file_.Get(), static_cast<off_t>(sizes_.length)) == 0 ? 0 : errno;
  if (error == 0 && volume.preallocates) error = Preallocate();
  if (error != 0) {
    file_.Close();
    unlink(path_.c_str());
    return error;
  }
  if (volume.writesDirectly && sizes_.length >= kDirectFileBytes)
    direct_ = TFileDescriptor(open(path_.c_str(), O_WRONLY | O_DIRECT | O_CLOEXEC));
  return 0;
}

// The end of the last file may be a hole: a series that fits on the disk must not be refused for what it never writes.
// A file that does not fit takes images as long as their blocks can be had.
int TSpoolFile::Preallocate()
{
  const int error = Allocate(0, sizes_.used);
  if (!IsDiskFull(error)) return error;
  reservesImages_ = true;
  return Allocate(0, sizes_.image);
}

int TSpoolFile::Allocate(std::uint64_t offset, std::uint64_t size)
{
  while (fallocate(file_.Get(), 0, static_cast<off_t>(offset), static_cast<off_t>(size)) != 0)
    if (errno != EINTR) return errno;
  return 0;
}

int TSpoolFile::Reserve(std::uint64_t offset, std::uint64_t size)
{
  return reservesImages_ ? Allocate(offset, size) : 0;
}

int TSpoolFile::Close()
{
  int error = Sync();
  // The file is not about to be read, and pages in the cache reduce the memory that the next ring finds free.
  if (error == 0) posix_fadvise(file_.Get(), 0, 0, POSIX_FADV_DONTNEED);
  direct_.Close();
  if (file_.Close() != 0 && error == 0) error = errno;
  return error;
}

int TSpoolFile::Sync()
{
  const TLock lock(syncMutex_);
  const std::uint32_t images = writtenImages_;
  if (syncError_ != 0 || images == syncedImages_) return syncError_;
  syncError_ = SyncPieces();
  if (syncError_ == 0) syncedImages_ = images;
  return syncError_;
}

// In pieces, so that a slow disk is seen to make progress. Each call reports an error once only.
int TSpoolFile::SyncPieces()
{
  int error = 0;
  for (std::uint64_t offset = 0; offset < sizes_.used; offset += kPieceBytes) {
    const auto size = static_cast<off_t>(std::min(kPieceBytes, sizes_.used - offset));
    constexpr unsigned int kWait =
        SYNC_FILE_RANGE_WAIT_BEFORE | SYNC_FILE_RANGE_WRITE | SYNC_FILE_RANGE_WAIT_AFTER;
    // Where this call is not supported, fdatasync() does all the work.
    const bool failed = sync_file_range(file_.Get(), static_cast<off_t>(offset), size, kWait) != 0;
    if (failed && error == 0 && !IsUnsupported(errno)) error = errno;
    ++*progress_;
  }
  if (fdatasync(file_.Get()) != 0 && error == 0) error = errno;
  ++*progress_;
  return error;
}

bool TSpoolFile::IsAsMade(TSpoolFault* fault) const
{
  return fault->CheckFile(file_.Get(), sizes_.length, path_);
}

int TSpoolFile::Lock(unsigned char*& /*destination*/)
{
  return ENOTSUP;
}

int TSpoolFile::WritePieces(int file, const unsigned char* data, std::size_t size, std::uint64_t offset)
{
  for (std::size_t done = 0; done < size;) {
    const std::size_t piece = std::min<std::size_t>(size - done, kPieceBytes);
    if (const int error = WriteAll(file, data + done, piece, offset + done)) return error;
    done += piece;
    ++*progress_;
  }
  return 0;
}

// The pages at either end, which neighbours share, go through the page cache; what lies between does not touch it.
int TSpoolFile::Write(const unsigned char* data, std::size_t size, std::uint64_t offset)
{
  const std::size_t head = std::min(BytesToAlignment(offset), size);
  const std::size_t middle = (size - head) / kAlignment * kAlignment;
  if (!direct_.IsOpen() || middle == 0 || !IsAlignedAlike(data, offset))
    return WritePieces(file_.Get(), data, size, offset);

  int error = WritePieces(direct_.Get(), data + head, middle, offset + head);
  // A file system may still refuse a particular unbuffered write.
  if (error == EINVAL) error = WritePieces(file_.Get(), data + head, middle, offset + head);
  if (error == 0) error = WritePieces(file_.Get(), data, head, offset);
  if (error == 0)
    error = WritePieces(file_.Get(), data + head + middle, size - head - middle, offset + head + middle);
  return error;
}

// The number comes last: it decides what a sync may count as being on the disk.
void TSpoolFile::ImagesWritten(std::uint32_t images, std::uint64_t offset, std::uint64_t size)
{
  writtenBytes_ += size;
  if (!direct_.IsOpen()) // what could not be begun early is done by Sync(), which reports failures
    sync_file_range(file_.Get(), static_cast<off_t>(offset), static_cast<off_t>(size), SYNC_FILE_RANGE_WRITE);
  writtenImages_ += images;
}
