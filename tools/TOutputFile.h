// SPDX-License-Identifier: MIT
// A file being written: positioned writes that are complete or an error with its reason.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace vxtool {

/// Owns one file descriptor. One thread at a time. Operations return false on failure; Error() then names file,
/// action and reason. A failure stays: what comes after it may succeed, but the first reason is kept.
class TOutputFile final
{
public:
  TOutputFile() = default;
  ~TOutputFile();
  TOutputFile(const TOutputFile&) = delete;
  TOutputFile& operator=(const TOutputFile&) = delete;

  /// Creates the file; an existing regular file is replaced only with @p overwrite, and not while another program
  /// writes it. Devices are opened as they are.
  bool Create(const std::string& path, bool overwrite);
  bool WriteAt(std::uint64_t offset, std::span<const std::byte> bytes);
  /// Has the file system set room aside from @p offset to @p end, so that later writes there do not lack it.
  bool Reserve(std::uint64_t offset, std::uint64_t end);
  bool ReadAt(std::uint64_t offset, std::span<std::byte> bytes);
  /// Cuts the file; a device, which has no length, counts as cut.
  bool Truncate(std::uint64_t length);
  /// The file's length in bytes, 0 when it cannot be found.
  std::uint64_t Length() const;
  bool Close();
  /// Closes and deletes a regular file.
  void Discard();

  bool IsOpen() const { return descriptor_ >= 0; }
  const std::string& Error() const { return error_; }
  /// Whether the first failure was for want of room: a full disk, a quota or a limit for files.
  bool LacksRoom() const { return lacksRoom_; }

private:
  bool Fail(const char* action);

  std::string path_;
  std::string error_;
  int descriptor_ = -1;
  bool isRegular_ = false;
  bool lacksRoom_ = false;
};

/// Whether a regular file is there that may not be replaced; the message then says so.
bool IsProtectedFile(const std::string& path, bool overwrite, std::string& message);
/// Whether a file can be made or replaced there, as far as that is known without trying; the message says why not.
bool CanBeCreated(const std::string& path, std::string& message);
/// The same for new files in the folder of that path.
bool CanBeInFolder(const std::string& path, std::string& message);

} // namespace vxtool
