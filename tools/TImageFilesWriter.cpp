// SPDX-License-Identifier: MIT
// A file and a writer for each image.
#include "tools/TImageFilesWriter.h"

#include "tools/TOutputFile.h"

#include <cerrno>
#include <charconv>
#include <cstdio>
#include <filesystem>
#include <system_error>
#include <unistd.h>

namespace vxtool {

namespace {

namespace fs = std::filesystem;

constexpr std::size_t kDigits = 7; // and more when the number has more

// The number in the name of an image's file; 0 when it is the name of something else.
long NumberIn(const std::string& name, const fs::path& path)
{
  const std::string start = path.stem().string() + "-";
  const std::string end = path.extension().string();
  if (!name.starts_with(start) || !name.ends_with(end) || name.size() < start.size() + kDigits + end.size())
    return 0;
  const char* const first = name.data() + start.size();
  const char* const last = name.data() + name.size() - end.size();
  long number = 0;
  const auto [rest, error] = std::from_chars(first, last, number);
  return error == std::errc{} && rest == last ? number : 0;
}

} // namespace

bool HasProtectedImageFile(const std::string& path, bool overwrite, const TNumberRanges& numbers,
                           std::string& message)
{
  if (overwrite) return false;
  const fs::path pattern(path);
  const fs::path folder = pattern.parent_path();
  std::error_code error;
  for (const fs::directory_entry& entry : fs::directory_iterator(folder.empty() ? "." : folder, error)) {
    const std::string name = entry.path().filename().string();
    const long number = NumberIn(name, pattern);
    const bool isWanted = number > 0 && (numbers.IsEmpty() || numbers.Has(number));
    if (isWanted && IsProtectedFile((folder / name).string(), overwrite, message)) return true;
  }
  return false;
}

bool TImageFilesWriter::Fail(const std::string& message)
{
  if (error_.empty()) error_ = message;
  return false;
}

bool TImageFilesWriter::Open(const std::string& path, bool overwrite, const TImageShape& shape,
                             const TRunFacts& facts)
{
  path_ = path;
  overwrite_ = overwrite;
  shape_ = shape;
  facts_ = facts;
  // Said before the first image is taken, where it can be.
  std::string message;
  const bool isNumbered = isAlwaysNumbered_ || facts.plannedImages != 1;
  if (isNumbered ? HasProtectedImageFile(path, overwrite, facts.imageNumbers, message)
                 : IsProtectedFile(path, overwrite, message))
    return Fail(message);
  return CanBeInFolder(path, message) || Fail(message);
}

std::string TImageFilesWriter::FileOf(const TImageLabel& label) const
{
  if (!isAlwaysNumbered_ && facts_.plannedImages == 1) return path_;
  const fs::path path(path_);
  char number[32];
  std::snprintf(number, sizeof number, "-%0*ld", static_cast<int>(kDigits), label.number);
  return (path.parent_path() / (path.stem().string() + number + path.extension().string())).string();
}

bool TImageFilesWriter::Write(TPixelBytes pixels, const TImageLabel& label)
{
  if (!error_.empty()) return false;
  const std::unique_ptr<IImageWriter> file = makeWriter_();
  TRunFacts facts = facts_;
  facts.plannedImages = 1;
  const bool isWritten = file->Open(FileOf(label), overwrite_, shape_, facts) && file->Write(pixels, label);
  if (!file->Close(std::nullopt) || !isWritten) return Fail(file->Error());
  ++imagesWritten_;
  return true;
}

bool TImageFilesWriter::Close(const std::optional<TFrameCounts>&)
{
  return error_.empty();
}

} // namespace vxtool
