// SPDX-License-Identifier: MIT
// A directory of a test's own to work in.
#pragma once

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

  std::string Path() const { return path_.string(); }
  void WriteFile(const std::string& name, const std::string& text) const;
  std::string ReadFile(const std::string& name) const;
  void Copy(const std::string& from, const std::string& name) const;
  void MakeDirectory(const std::string& name) const;
  void MakePipe(const std::string& name) const;
  void Remove(const std::string& name) const;
  /// Deletes the directory itself; the process goes on working in it.
  void RemoveAll() const;

private:
  std::filesystem::path before_;
  std::filesystem::path path_;
};
