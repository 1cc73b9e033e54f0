// SPDX-License-Identifier: MIT
// From the number of an image to its bytes.
#include "runs/TRunImages.h"

#include "runs/run_format.h"

#include <algorithm>
#include <climits>
#include <filesystem>

TRunImages::TRunImages(const std::string& directory, std::int64_t imagesPerFile, std::int64_t imageBytes)
    : directory_(directory), imagesPerFile_(imagesPerFile), imageBytes_(imageBytes)
{
  Refresh();
}

void TRunImages::Refresh()
{
  numbers_.clear();
  number_ = -1;
  end_ = 0;
  std::error_code error;
  std::filesystem::directory_iterator entry(directory_, error);
  for (; !error && entry != std::filesystem::directory_iterator(); entry.increment(error)) {
    const auto number = RunFormat::ImageFileNumber(entry->path().filename().string());
    // A file behind all images that a run can have is not one of a run.
    if (!number || *number > INT_MAX / imagesPerFile_) continue;
    numbers_.push_back(*number);
  }
  std::sort(numbers_.begin(), numbers_.end());
  if (!numbers_.empty()) end_ = (numbers_.back() + 1) * imagesPerFile_;
}

bool TRunImages::OpenFile(std::int64_t number)
{
  if (number == number_) return isOpen_;
  number_ = number;
  isOpen_ = file_.Open(directory_ + "/" + RunFormat::ImageFileName(number));
  if (!isOpen_) error_ = file_.Error();
  return isOpen_;
}

std::int64_t TRunImages::NextFileStart(std::int64_t number) const
{
  const auto next = std::upper_bound(numbers_.begin(), numbers_.end(), number);
  return next == numbers_.end() ? kNoImage : *next * imagesPerFile_;
}

std::int64_t TRunImages::NextUsed(std::int64_t image, bool takesUnreadable)
{
  while (image < end_) {
    const std::int64_t file = image / imagesPerFile_;
    const bool isOpen = OpenFile(file);
    const std::int64_t places =
        isOpen ? std::min(static_cast<std::int64_t>(file_.Length()) / imageBytes_, imagesPerFile_) : 0;
    const std::int64_t place = image % imagesPerFile_;
    if (place < places) {
      const auto end = static_cast<std::uint64_t>(places * imageBytes_);
      const std::uint64_t found = file_.NextNonzero(static_cast<std::uint64_t>(place * imageBytes_), end);
      if (found < end) return file * imagesPerFile_ + static_cast<std::int64_t>(found) / imageBytes_;
    }
    if (takesUnreadable && places < imagesPerFile_) return file * imagesPerFile_ + std::max(place, places);
    image = isOpen ? (file + 1) * imagesPerFile_ : NextFileStart(file);
  }
  return kNoImage;
}

bool TRunImages::HasPlace(std::int64_t image)
{
  const auto end = static_cast<std::uint64_t>((image % imagesPerFile_ + 1) * imageBytes_);
  const std::int64_t file = image / imagesPerFile_;
  if (OpenFile(file) && file_.Length() >= end) return true;
  number_ = -1; // looks anew
  return OpenFile(file) && file_.Length() >= end;
}

bool TRunImages::ReadImage(std::int64_t image, std::vector<std::byte>& bytes)
{
  const std::int64_t number = image / imagesPerFile_;
  const std::string path = directory_ + "/" + RunFormat::ImageFileName(number);
  if (!OpenFile(number)) {
    unreadableEnd_ = NextFileStart(number);
    return false;
  }
  const auto offset = static_cast<std::uint64_t>(image % imagesPerFile_ * imageBytes_);
  // Before any memory is allocated: by the description, an image may be larger than any file can be.
  if (file_.Length() < offset + static_cast<std::uint64_t>(imageBytes_)) {
    error_ = path + ": is too short";
    unreadableEnd_ = (number + 1) * imagesPerFile_;
    return false;
  }
  bytes.resize(static_cast<std::size_t>(imageBytes_));
  if (file_.ReadAt(offset, bytes)) return true;
  unreadableEnd_ = image + 1;
  error_ = file_.Error();
  return false;
}
