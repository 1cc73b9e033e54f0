// SPDX-License-Identifier: MIT
// Names of files and directories.
#pragma once

#include <memory>
#include <string>

namespace QuorinUtility {

/// The name of a file or directory, absolute or relative. Both "/" and "\" separate; it is kept with "/"
/// throughout and else as given: nothing is looked up on the disk. A plain value. Only a lack of memory makes it
/// throw.
class TQuorinFilePath final
{
public:
  TQuorinFilePath() = default;
  /// A null text gives the empty path.
  TQuorinFilePath(const char* text);

  /// Makes the path end in a separator, so that a name can follow. The empty path means the working directory
  /// and becomes "./", never "/".
  void DelimitEnd();

  /// The path with "/" separators; valid until the object changes or ends.
  const char* GetForwardSlashPath() const { return path_.c_str(); }

  /// The path without its last component: "/a" for "/a/b/", "/" for "/a", "." for "a". Null at the top, which is
  /// "/" or "." or the empty path. Taking parents always comes to an end.
  std::unique_ptr<TQuorinFilePath> GetParent() const;

private:
  std::string path_;
};

/// Joins a directory and a name in it, with one separator in between; the empty directory gives the name alone.
TQuorinFilePath operator+(const TQuorinFilePath& directory, const TQuorinFilePath& name);

} // namespace QuorinUtility
