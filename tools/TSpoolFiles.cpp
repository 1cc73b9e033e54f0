// SPDX-License-Identifier: MIT
// From the number of an image to its bytes.
#include "tools/TSpoolFiles.h"

#include "tools/TSpoolRun.h"

#include <algorithm>
#include <climits>
#include <filesystem>

namespace vxtool {

TSpoolFiles::TSpoolFiles(const std::string& directory, std::int64_t imagesPerFile, std::int64_t imageBytes)
    : directory_(directory), imagesPerFile_(imagesPerFile), imageBytes_(imageBytes)
{
  std::error_code error;
  std::filesystem::directory_iterator entry(directory, error);
  for (; !error && entry != std::filesystem::directory_iterator(); entry.increment(error)) {
    const auto number = SpoolFileNumber(entry->path().filename().string());
    // A file behind all images that a run can have is not one of a run.
    if (!number || *number > INT_MAX / imagesPerFile) continue;
    ++count_;
    end_ = std::max(end_, (*number + 1) * imagesPerFile);
  }
}

bool TSpoolFiles::ReadImage(std::int64_t image, std::vector<std::byte>& bytes)
{
  const std::int64_t number = image / imagesPerFile_;
  const std::string path = directory_ + "/" + SpoolFileName(number);
  if (number != number_) {
    number_ = number;
    isOpen_ = file_.Open(path);
    if (!isOpen_) error_ = file_.Error();
  }
  if (!isOpen_) return false;
  const auto offset = static_cast<std::uint64_t>(image % imagesPerFile_ * imageBytes_);
  // Before any memory is asked for: the description may tell of images that no file could hold.
  if (file_.Length() < offset + static_cast<std::uint64_t>(imageBytes_)) {
    error_ = path + ": is too short";
    return false;
  }
  bytes.resize(static_cast<std::size_t>(imageBytes_));
  if (file_.ReadAt(offset, bytes)) return true;
  error_ = file_.Error();
  return false;
}

} // namespace vxtool
