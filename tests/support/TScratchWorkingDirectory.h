// SPDX-License-Identifier: MIT
// A directory of a test's own to work in.
#pragma once

#include "tests/support/TScratchDirectory.h"

#include <filesystem>
#include <stdexcept>
#include <string>

/// Makes an empty directory the working directory; at the end it is gone and the one before is back. Names are
/// relative to it. What the file system refuses is an exception.
class TScratchWorkingDirectory final
{
public:
  TScratchWorkingDirectory() : before_(std::filesystem::current_path()) { std::filesystem::current_path(Path()); }
  ~TScratchWorkingDirectory()
  {
    std::error_code ignored;
    std::filesystem::current_path(before_, ignored);
  }
  TScratchWorkingDirectory(const TScratchWorkingDirectory&) = delete;
  TScratchWorkingDirectory& operator=(const TScratchWorkingDirectory&) = delete;

  std::string Path() const { return scratch_.Directory(); }
  void WriteFile(const std::string& name, const std::string& text) const { scratch_.File(text, name); }
  std::string ReadFile(const std::string& name) const
  {
    if (!std::filesystem::exists(scratch_.Path(name))) throw std::runtime_error("no file " + name);
    return TextOf(scratch_.Path(name));
  }
  void Copy(const std::string& from, const std::string& name) const
  {
    Remove(name); // in a new file: the one before may be a library that is loaded
    std::filesystem::copy_file(from, scratch_.Path(name));
  }
  void MakeDirectory(const std::string& name) const { std::filesystem::create_directory(scratch_.Path(name)); }
  void MakePipe(const std::string& name) const { scratch_.Fifo(name); }
  void Remove(const std::string& name) const { std::filesystem::remove(scratch_.Path(name)); }
  /// Deletes the directory itself; the process goes on working in it.
  void RemoveAll() const { std::filesystem::remove_all(Path()); }

private:
  const TScratchDirectory scratch_;
  const std::filesystem::path before_;
};
