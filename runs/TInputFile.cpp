// SPDX-License-Identifier: MIT
// Positioned reads of regular files.
#include "runs/TInputFile.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace {
constexpr std::uint64_t kWindowBytes = 65'536;
constexpr std::size_t kLargeReadBytes = std::size_t{1} << 20;
} // namespace

TInputFile::~TInputFile()
{
  Close();
}

void TInputFile::Close()
{
  if (descriptor_ >= 0) close(descriptor_);
  descriptor_ = -1;
  length_ = 0;
  isMissing_ = false;
  window_.clear();
}

bool TInputFile::Fail(const std::string& reason)
{
  error_ = path_ + ": " + reason;
  return false;
}

bool TInputFile::Open(const std::string& path)
{
  Close();
  path_ = path;
  descriptor_ = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (descriptor_ < 0) {
    isMissing_ = errno == ENOENT || errno == ENOTDIR;
    return Fail(isMissing_ ? "is missing" : "cannot be opened: " + std::generic_category().message(errno));
  }
  struct stat status = {};
  if (fstat(descriptor_, &status) != 0 || !S_ISREG(status.st_mode)) {
    Close();
    return Fail("is not a regular file");
  }
  length_ = static_cast<std::uint64_t>(status.st_size);
  return true;
}

// The next image is likely to be read next: the system reads it ahead while this one is converted.
bool TInputFile::ReadAt(std::uint64_t offset, std::span<std::byte> bytes)
{
  if (const std::size_t size = bytes.size(); size >= kLargeReadBytes)
    posix_fadvise(descriptor_, static_cast<off_t>(offset + size), static_cast<off_t>(size), POSIX_FADV_WILLNEED);
  while (!bytes.empty()) {
    const ssize_t done = pread(descriptor_, bytes.data(), bytes.size(), static_cast<off_t>(offset));
    if (done < 0 && errno == EINTR) continue;
    if (done < 0) return Fail("cannot be read: " + std::generic_category().message(errno));
    if (done == 0) return Fail("is too short");
    offset += static_cast<std::uint64_t>(done);
    bytes = bytes.subspan(static_cast<std::size_t>(done));
  }
  return true;
}

bool TInputFile::ReadWindow(std::uint64_t offset)
{
  const off_t data = lseek(descriptor_, static_cast<off_t>(offset), SEEK_DATA);
  if (data < 0 && errno == ENXIO) return false;
  windowStart_ = data < 0 ? offset : static_cast<std::uint64_t>(data); // not every file system knows its holes
  window_.resize(std::min<std::uint64_t>(kWindowBytes, length_ - windowStart_));
  if (ReadAt(windowStart_, window_)) return true;
  window_.assign(1, std::byte{1}); // may be anything
  return true;
}

std::uint64_t TInputFile::NextNonzero(std::uint64_t offset, std::uint64_t end)
{
  while (offset < end) {
    if (offset < windowStart_ || offset >= windowStart_ + window_.size()) {
      if (!ReadWindow(offset)) return end;
      offset = windowStart_;
    }
    const auto found = std::find_if(window_.begin() + static_cast<std::ptrdiff_t>(offset - windowStart_),
                                    window_.end(), [](std::byte byte) { return byte != std::byte{0}; });
    offset = windowStart_ + static_cast<std::uint64_t>(found - window_.begin());
    if (found != window_.end()) break;
  }
  return std::min(offset, end);
}
