// SPDX-License-Identifier: MIT
// The image files of a recorded run.
#pragma once

#include "runs/TInputFile.h"

#include <cstdint>
#include <string>
#include <vector>

/// Reads images by number, one file open at a time, so that a run may have any number of files. One thread at a
/// time.
class TRunImages final
{
public:
  TRunImages(const std::string& directory, std::int64_t imagesPerFile, std::int64_t imageBytes);

  /// Looks for the files anew, as there may be others.
  void Refresh();
  /// Reads image @p image, from 0. False with Error() set when its file is missing, too short, or cannot be read.
  bool ReadImage(std::int64_t image, std::vector<std::byte>& bytes);
  /// Whether the file of an image is long enough for it, now that it may have grown.
  bool HasPlace(std::int64_t image);
  const std::string& Error() const { return error_; }
  /// The first image from @p image on whose place is not all zeros, kNoImage for none. @param takesUnreadable  also
  /// one below End() whose file is missing, too short, or cannot be opened
  std::int64_t NextUsed(std::int64_t image, bool takesUnreadable);
  /// After a failed ReadImage(): the number behind the images that cannot be read for the same reason.
  std::int64_t UnreadableEnd() const { return unreadableEnd_; }
  /// The number of image files, and the number behind the last image that has a place in one of them.
  std::int64_t Count() const { return static_cast<std::int64_t>(numbers_.size()); }
  std::int64_t End() const { return end_; }

  static constexpr std::int64_t kNoImage = INT64_MAX;

private:
  bool OpenFile(std::int64_t number);
  /// The first image of the file that is there behind this one.
  std::int64_t NextFileStart(std::int64_t number) const;

  std::string directory_;
  std::int64_t imagesPerFile_;
  std::int64_t imageBytes_;
  std::vector<std::int64_t> numbers_; // of the files that are there, ascending
  std::int64_t end_ = 0;
  std::int64_t unreadableEnd_ = 0;
  TInputFile file_;
  std::string error_;
  std::int64_t number_ = -1; // of the file that is open or could not be opened
  bool isOpen_ = false;
};
