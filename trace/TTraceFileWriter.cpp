// SPDX-License-Identifier: MIT
// The file of a call trace, as the library writes it.
#include "trace/TTraceFileWriter.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

using TraceFormat::kChunkBytes;

namespace {

// The file grows by so many chunks.
constexpr std::size_t kStepChunks = 16;
// The beginning of a trace that is never dropped: what the program set up.
constexpr std::size_t kKeptBytes = std::size_t{16} << 20;
// With fewer chunks a file that cannot grow is of no use for what comes.
constexpr std::size_t kMinChunks = 2 * kStepChunks;

std::string ErrorText(const char* what, int error)
{
  char text[128] = {};
  return std::string(what) + ": " + strerror_r(error, text, sizeof text);
}

// The system would end a process that exceeds the limit, so that it has to be asked first.
int Allocate(int file, std::uint64_t end)
{
  rlimit limit{};
  if (getrlimit(RLIMIT_FSIZE, &limit) == 0 && limit.rlim_cur != RLIM_INFINITY && end > limit.rlim_cur)
    return EFBIG;
  struct stat status
  {
  };
  if (fstat(file, &status) != 0) return errno;
  const auto begin = static_cast<std::uint64_t>(status.st_size);
  if (begin >= end) return 0;
  return posix_fallocate(file, static_cast<off_t>(begin), static_cast<off_t>(end - begin));
}

// Empty, or a trace: anything else is not replaced.
bool MayBeReplaced(int file)
{
  char magic[sizeof TraceFormat::kFileMagic] = {};
  const ssize_t size = pread(file, magic, sizeof magic, 0);
  return size == 0 || (size == sizeof magic && std::memcmp(magic, TraceFormat::kFileMagic, sizeof magic) == 0);
}

} // namespace

std::string TTraceFileWriter::Open(const std::string& path, std::uint64_t limitBytes,
                                   TraceFormat::TFileHeader header, const std::string& text)
{
  header.textBytes = static_cast<std::uint32_t>(text.size());
  headerBytes_ = (sizeof header + text.size() + kChunkBytes - 1) / kChunkBytes * kChunkBytes;
  header.headerBytes = static_cast<std::uint32_t>(headerBytes_);
  const std::size_t chunks = std::max<std::size_t>(limitBytes / kChunkBytes, kStepChunks);
  const std::size_t mappedBytes = headerBytes_ + chunks * kChunkBytes;

  file_ = open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOCTTY | O_NONBLOCK, 0600);
  if (file_ < 0) return ErrorText("cannot be opened", errno);
  struct stat status
  {
  };
  std::string wrong;
  if (fstat(file_, &status) != 0 || !S_ISREG(status.st_mode))
    wrong = "is no file";
  else if (flock(file_, LOCK_EX | LOCK_NB) != 0)
    wrong = "is being written by another process";
  else if (!MayBeReplaced(file_))
    wrong = "exists and is no trace";
  else if (ftruncate(file_, 0) != 0 || fchmod(file_, 0600) != 0)
    wrong = ErrorText("cannot be replaced", errno);
  else if (const int error = Allocate(file_, headerBytes_ + kStepChunks * kChunkBytes); error != 0)
    wrong = ErrorText("cannot be written", error);
  if (wrong.empty()) {
    void* const mapping = mmap(nullptr, mappedBytes, PROT_READ | PROT_WRITE, MAP_SHARED, file_, 0);
    if (mapping == MAP_FAILED)
      wrong = ErrorText("cannot be mapped", errno);
    else
      mapping_ = static_cast<std::byte*>(mapping);
  }
  if (!wrong.empty()) {
    close(file_);
    return wrong;
  }

  device_ = status.st_dev;
  inode_ = status.st_ino;
  allocatedChunks_ = kStepChunks;
  firstReused_ = std::min(kKeptBytes / kChunkBytes, chunks / 2);
  isInUse_.assign(chunks, false);
  std::memcpy(mapping_ + sizeof header, text.data(), text.size());
  std::memcpy(mapping_, &header, sizeof header);
  return "";
}

std::byte* TTraceFileWriter::TakeChunk()
{
  // Chunks that threads still write are passed over.
  for (std::size_t passed = 0; passed <= allocatedChunks_; ++passed) {
    if (next_ >= allocatedChunks_ && !Grow()) next_ = firstReused_;
    if (!growthError_.empty() && allocatedChunks_ < kMinChunks) return nullptr;
    const std::size_t index = next_++;
    if (isInUse_[index]) continue;
    ++taken_;
    isInUse_[index] = true;
    return ChunkAt(index);
  }
  return nullptr;
}

void TTraceFileWriter::ReleaseChunk(const std::byte* chunk)
{
  isInUse_[static_cast<std::size_t>(chunk - ChunkAt(0)) / kChunkBytes] = false;
}

bool TTraceFileWriter::Grow()
{
  if (!growthError_.empty() || allocatedChunks_ == isInUse_.size()) return false;
  const std::size_t chunks = std::min(allocatedChunks_ + kStepChunks, isInUse_.size());
  struct stat status
  {
  };
  // A program may have closed all its descriptors, and given the number of ours to another file.
  const bool isOurs = fstat(file_, &status) == 0 && status.st_dev == device_ && status.st_ino == inode_;
  if (const int error = isOurs ? Allocate(file_, headerBytes_ + chunks * kChunkBytes) : EBADF; error != 0) {
    growthError_ = ErrorText("cannot grow", error);
    firstReused_ = std::min(firstReused_, allocatedChunks_ / 2);
    return false;
  }
  // All pages at once take less time than one fault for each. Systems that cannot do it have the faults.
  madvise(ChunkAt(allocatedChunks_), (chunks - allocatedChunks_) * kChunkBytes, MADV_POPULATE_WRITE);
  allocatedChunks_ = chunks;
  return true;
}
