// SPDX-License-Identifier: MIT
// A directory of a test's own to work in.
#pragma once

#include "tests/support/TScratchDirectory.h"

#include <filesystem>
#include <string>

/// Makes an empty directory the working directory; at the end it is gone and the one before is back. Names are
/// relative to it. What the file system refuses is an exception.
class TScratchWorkingDirectory final
{
public:
  TScratchWorkingDirectory();
  ~TScratchWorkingDirectory();
  TScratchWorkingDirectory(const TScratchWorkingDirectory&) = delete;
  TScratchWorkingDirectory& operator=(const TScratchWorkingDirectory&) = delete;

  std::string Path() const { return scratch_.Directory(); }
  void WriteFile(const std::string& name, const std::string& text) const;
  std::string ReadFile(const std::string& name) const;
  void Copy(const std::string& from, const std::string& name) const;
  void MakeDirectory(const std::string& name) const;
  void MakePipe(const std::string& name) const;
  void Remove(const std::string& name) const;
  /// Deletes the directory itself; the process goes on working in it.
  void RemoveAll() const;

private:
  const TScratchDirectory scratch_;
  const std::filesystem::path before_;
};
