// SPDX-License-Identifier: MIT
// Files for a test, gone when it ends.
#pragma once

#include <cstddef>
#include <filesystem>
#include <string>

/// A directory for one test's files. Its operations hand out full paths.
class TScratchDirectory final
{
public:
  TScratchDirectory();
  ~TScratchDirectory();
  TScratchDirectory(const TScratchDirectory&) = delete;
  TScratchDirectory& operator=(const TScratchDirectory&) = delete;

  /// Writes the file anew.
  std::string File(const std::string& text, const std::string& name = "file.ini") const;
  std::string Fifo() const;
  std::string Missing() const { return (path_ / "missing.ini").string(); }
  std::string Directory() const { return path_.string(); }

private:
  std::filesystem::path path_;
};

std::string TextOf(const std::string& fileName);

/// File descriptors that this process has open.
std::ptrdiff_t OpenDescriptors();
