// SPDX-License-Identifier: MIT
// Files for a test, gone when it ends.
#pragma once

#include <cstddef>
#include <filesystem>
#include <string>

/// A directory for one test's files: no test running at the same time has the same. Its operations return full
/// paths; what the file system refuses is an exception.
class TScratchDirectory final
{
public:
  TScratchDirectory();
  ~TScratchDirectory();
  TScratchDirectory(const TScratchDirectory&) = delete;
  TScratchDirectory& operator=(const TScratchDirectory&) = delete;

  /// Writes the file anew.
  std::string File(const std::string& text, const std::string& name = "file.ini") const;
  std::string Fifo(const std::string& name = "fifo") const;
  std::string Missing() const { return Path("missing.ini"); }
  std::string Path(const std::string& name) const { return (path_ / name).string(); }
  std::string Directory() const { return path_.string(); }

private:
  std::filesystem::path path_;
};

/// The whole file; nothing if there is none.
std::string TextOf(const std::string& fileName);

/// File descriptors that this process has open.
std::ptrdiff_t OpenDescriptors();
