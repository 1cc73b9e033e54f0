// SPDX-License-Identifier: MIT
// Reads what a recorded run has left.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <utility>
#include <vector>

/// The directory of a spooled run, read anew by every operation.
class TSpoolDirectory final
{
public:
  explicit TSpoolDirectory(std::string path) : path_(std::move(path)) {}

  const std::string& Path() const { return path_; }
  bool IsDescribed() const;
  /// A value of acquisitionmetadata.ini, "" when it is missing.
  std::string Text(const char* section, const char* key) const;
  long Number(const char* section, const char* key) const;
  /// Visits the images that have a good record in the index, by number, with the bytes that their files have for
  /// them: none when they do not fit the checksum. Returns how many there are.
  std::uint64_t VisitImages(
      const std::function<void(std::uint64_t number, const std::vector<unsigned char>& bytes)>& visit) const;
  /// Names of the files in the directory, sorted.
  std::vector<std::string> Files() const;

private:
  std::string path_;
};
