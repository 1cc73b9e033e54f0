// SPDX-License-Identifier: MIT
// A preview file for each image.
#include "tools/TPngSeriesWriter.h"

#include "tools/TOutputFile.h"
#include "tools/TPngPreviewWriter.h"

#include <cstdio>
#include <filesystem>

namespace vxtool {

bool TPngSeriesWriter::Fail(const std::string& message)
{
  if (error_.empty()) error_ = message;
  return false;
}

bool TPngSeriesWriter::Open(const std::string& path, bool overwrite, const TImageShape& shape,
                            const TRunFacts& facts)
{
  path_ = path;
  overwrite_ = overwrite;
  shape_ = shape;
  facts_ = facts;
  // Said before the first image is read, where it can be.
  std::string message;
  if (facts.plannedImages == 1 && IsProtectedFile(path, overwrite, message)) return Fail(message);
  const std::filesystem::path folder = std::filesystem::path(path).parent_path();
  std::error_code ignored;
  return folder.empty() || std::filesystem::is_directory(folder, ignored) ||
         Fail(path + ": cannot be created: No such file or directory");
}

std::string TPngSeriesWriter::FileOf(const TImageLabel& label) const
{
  if (facts_.plannedImages == 1) return path_;
  const std::filesystem::path path(path_);
  char number[32];
  std::snprintf(number, sizeof number, "-%07ld", label.number);
  return (path.parent_path() / (path.stem().string() + number + path.extension().string())).string();
}

bool TPngSeriesWriter::Write(TPixelBytes pixels, const TImageLabel& label)
{
  if (!error_.empty()) return false;
  TPngPreviewWriter picture;
  const bool isWritten = picture.Open(FileOf(label), overwrite_, shape_, facts_) && picture.Write(pixels, label);
  if (!picture.Close(std::nullopt) || !isWritten) return Fail(picture.Error());
  ++imagesWritten_;
  return true;
}

bool TPngSeriesWriter::Close(const std::optional<TFrameCounts>&)
{
  return error_.empty();
}

} // namespace vxtool
