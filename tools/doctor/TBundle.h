// SPDX-License-Identifier: MIT
// A compressed archive of reports, to send to somebody.
#pragma once

#include <string>
#include <vector>

struct archive;

namespace vxtool {

/// Makes a .tar.gz file that only its owner may read, and adds a list of its files with their SHA-256 at the end. The
/// file has its name only when Close() has succeeded. One thread. Operations return false on failure; Error() says why.
class TBundle final
{
public:
  TBundle() = default;
  ~TBundle();
  TBundle(const TBundle&) = delete;
  TBundle& operator=(const TBundle&) = delete;

  /// An existing file is not replaced.
  bool Create(const std::string& path);
  bool Add(const std::string& name, const std::string& text);
  /// Adds manifest.json and gives the file its name.
  bool Close();

  /// The names of what was added.
  std::vector<std::string> Names() const;
  const std::string& Error() const { return error_; }

private:
  struct TEntry
  {
    std::string name;
    std::size_t bytes;
    std::string sha256;
  };

  bool Fail(const std::string& reason);
  bool Write(const std::string& name, const std::string& text);

  std::string path_;
  std::string temporary_;
  archive* archive_ = nullptr;
  std::vector<TEntry> entries_;
  std::string error_;
};

} // namespace vxtool
