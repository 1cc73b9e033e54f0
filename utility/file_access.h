// SPDX-License-Identifier: MIT
// Files and directories by the system's own calls: who closes them, and writing without surprises.
#pragma once

#include <cstddef>
#include <cstdint>
#include <dirent.h>
#include <memory>
#include <unistd.h>
#include <utility>

/// Owns a file descriptor, or none (-1). Reentrant.
class TFileDescriptor final
{
public:
  TFileDescriptor() = default;
  explicit TFileDescriptor(int descriptor) : descriptor_(descriptor) {}
  TFileDescriptor(TFileDescriptor&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}
  TFileDescriptor& operator=(TFileDescriptor&& other) noexcept
  {
    if (this != &other) {
      Close();
      descriptor_ = std::exchange(other.descriptor_, -1);
    }
    return *this;
  }
  ~TFileDescriptor() { Close(); }

  int Get() const { return descriptor_; }
  bool IsOpen() const { return descriptor_ >= 0; }

  /// Returns what close() returns, 0 when nothing was open.
  int Close() { return descriptor_ < 0 ? 0 : close(std::exchange(descriptor_, -1)); }

private:
  int descriptor_ = -1;
};

struct TDirectoryCloser
{
  void operator()(DIR* directory) const { closedir(directory); }
};

/// What opendir() has opened, or nothing.
using TOpenDirectory = std::unique_ptr<DIR, TDirectoryCloser>;

/// Writes all bytes, however often the system call has to be repeated. Returns 0, or the errno value of the write
/// that failed.
int WriteAll(int descriptor, const void* data, std::size_t size, std::uint64_t offset);

/// Whether an errno value says that the file system has no such operation, rather than that it failed.
bool IsUnsupported(int error);

/// Whether an errno value says that there is no room left on the disk, or none that this user may have.
bool IsDiskFull(int error);

/// The process's limit for the size of files in bytes, UINT64_MAX for none.
std::uint64_t FileSizeLimit();

/// EFBIG when a file of @p size bytes is beyond the process's limit for the size of files, else 0. Asked
/// beforehand, since going beyond it may end the process by a signal.
int CheckFileSizeLimit(std::uint64_t size);
