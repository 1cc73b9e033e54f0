// SPDX-License-Identifier: MIT
// A file being read: positioned reads that are complete or an error with its reason.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

/// Owns one descriptor of a regular file; symbolic links to one are followed. Anything else (a directory, a pipe,
/// a device) is refused, so that no read waits or has no end. One thread at a time. Operations return false on
/// failure; Error() then names file and reason.
class TInputFile final
{
public:
  TInputFile() = default;
  ~TInputFile();
  TInputFile(const TInputFile&) = delete;
  TInputFile& operator=(const TInputFile&) = delete;

  /// Opens a file, closing the one before.
  bool Open(const std::string& path);
  bool ReadAt(std::uint64_t offset, std::span<std::byte> bytes);
  /// The first byte from @p offset on, and before @p end, that is not zero or cannot be read; @p end for none.
  /// Holes take no time.
  std::uint64_t NextNonzero(std::uint64_t offset, std::uint64_t end);
  /// The file's length in bytes when it was opened.
  std::uint64_t Length() const { return length_; }
  /// Whether the last Open() failed because nothing has that name.
  bool IsMissing() const { return isMissing_; }
  const std::string& Error() const { return error_; }

private:
  bool Fail(const std::string& reason);
  void Close();

  /// Reads from the next data on into the window; false when there is none.
  bool ReadWindow(std::uint64_t offset);

  std::string path_;
  std::string error_;
  std::uint64_t length_ = 0;
  int descriptor_ = -1;
  bool isMissing_ = false;
  std::vector<std::byte> window_; // what was looked at last
  std::uint64_t windowStart_ = 0;
};
