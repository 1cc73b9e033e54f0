// SPDX-License-Identifier: MIT
// One file of a spooled run.
#include "spool/TSpoolFile.h"

#include "spool/file_writing.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <sys/mman.h>
#include <utility>

namespace {

constexpr std::size_t kAlignment = TSpoolVolume::kAlignment;

std::size_t BytesToAlignment(std::uint64_t offset)
{
  return static_cast<std::size_t>((kAlignment - offset % kAlignment) % kAlignment);
}

bool IsAlignedAlike(const unsigned char* data, std::uint64_t offset)
{
  return reinterpret_cast<std::uintptr_t>(data) % kAlignment == offset % kAlignment;
}

} // namespace

TSpoolFile::TSpoolFile(std::string path, unsigned int number, std::uint64_t sizeBytes,
                       std::atomic<std::uint64_t>* progress)
    : path_(std::move(path)), number_(number), sizeBytes_(sizeBytes), progress_(progress)
{
}

TSpoolFile::~TSpoolFile()
{
  if (memory_) munmap(memory_, sizeBytes_);
}

int TSpoolFile::Create(const TSpoolVolume& volume)
{
  if (const int error = CheckFileSizeLimit(sizeBytes_)) return error;
  file_ = TFileDescriptor(open(path_.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
  if (!file_.IsOpen()) return errno;
  if (const int error = Preallocate(volume)) {
    file_.Close();
    unlink(path_.c_str());
    return error;
  }
  if (volume.writesDirectly) direct_ = TFileDescriptor(open(path_.c_str(), O_WRONLY | O_DIRECT | O_CLOEXEC));
  return 0;
}

// Where blocks cannot be set aside the file only gets its size; nobody maps such a file.
int TSpoolFile::Preallocate(const TSpoolVolume& volume)
{
  const auto size = static_cast<off_t>(sizeBytes_);
  if (!volume.preallocates) return ftruncate(file_.Get(), size) == 0 ? 0 : errno;
  while (fallocate(file_.Get(), 0, 0, size) != 0)
    if (errno != EINTR) return errno;
  return 0;
}

int TSpoolFile::Close()
{
  int error = 0;
  if (memory_) munmap(std::exchange(memory_, nullptr), sizeBytes_);
  if (sizeBytes_ >= kLargeFileBytes) error = Sync();
  // Nobody is about to read the file, and pages in the cache count as memory that is missing for the next ring.
  if (error == 0) posix_fadvise(file_.Get(), 0, 0, POSIX_FADV_DONTNEED);
  direct_.Close();
  if (file_.Close() != 0 && error == 0) error = errno;
  return error;
}

// In pieces, so that a slow disk is seen to make progress. Each call reports an error once only.
int TSpoolFile::Sync()
{
  int error = 0;
  for (std::uint64_t offset = 0; offset < sizeBytes_; offset += kPieceBytes) {
    const auto size = static_cast<off_t>(std::min(kPieceBytes, sizeBytes_ - offset));
    constexpr unsigned int kWait =
        SYNC_FILE_RANGE_WAIT_BEFORE | SYNC_FILE_RANGE_WRITE | SYNC_FILE_RANGE_WAIT_AFTER;
    if (sync_file_range(file_.Get(), static_cast<off_t>(offset), size, kWait) != 0 && error == 0) error = errno;
    ++*progress_;
  }
  if (fdatasync(file_.Get()) != 0 && error == 0) error = errno;
  ++*progress_;
  return error;
}

int TSpoolFile::Lock(unsigned char*& destination)
{
  const std::lock_guard lock(mutex_);
  if (!memory_) {
    void* const memory = mmap(nullptr, sizeBytes_, PROT_READ | PROT_WRITE, MAP_SHARED, file_.Get(), 0);
    if (memory == MAP_FAILED) return errno;
    memory_ = static_cast<unsigned char*>(memory);
  }
  destination = memory_;
  return 0;
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

// What could not be begun early is done by Close(), which also reports what fails.
void TSpoolFile::PartDone(std::uint64_t offset, std::uint64_t size)
{
  if (!direct_.IsOpen())
    sync_file_range(file_.Get(), static_cast<off_t>(offset), static_cast<off_t>(size), SYNC_FILE_RANGE_WRITE);
  doneBytes_ += size;
}
