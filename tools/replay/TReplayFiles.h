// SPDX-License-Identifier: MIT
// The files of a replay.
#pragma once

#include <string>

namespace vxtool {

/// Where the files lie that the program wrote: in a directory that is removed with the object, so that a replay replaces
/// nothing, or at the same paths. A file that it only read is read where the program read it. Thread-safe, but for
/// construction.
class TReplayFiles final
{
public:
  /// @param hasSamePaths  files are written where the program wrote them
  explicit TReplayFiles(bool hasSamePaths);
  ~TReplayFiles();
  TReplayFiles(const TReplayFiles&) = delete;
  TReplayFiles& operator=(const TReplayFiles&) = delete;

  /// The path to pass to a function for the recorded one. Makes what has to be there first.
  std::string PathFor(const std::string& function, const std::string& recorded) const;
  /// A file of the replay's own in the directory, with this text. Its path; "" when it could not be written.
  std::string Write(const std::string& name, const std::string& text) const;
  /// The user's directory, which traces write as "~"; "" when it is not known.
  const std::string& Home() const { return home_; }
  /// Removes the directory.
  void Remove() const;

private:
  const bool hasSamePaths_;
  const std::string home_;
  std::string directory_;
};

} // namespace vxtool
