// SPDX-License-Identifier: MIT
// Writes images to one file each.
#pragma once

#include "tools/IImageWriter.h"

#include <functional>
#include <memory>

namespace vxtool {

/// A file for each image, by a writer of any format that is made for each: "run.fits" becomes "run-0000012.fits" for
/// image 12. A file is complete as soon as its image is written. One thread at a time; errors as IImageWriter says.
class TImageFilesWriter final : public IImageWriter
{
public:
  using MakeWriter = std::function<std::unique_ptr<IImageWriter>()>;

  /// @param isAlwaysNumbered  also the only image asked for has its number in the name of its file
  TImageFilesWriter(MakeWriter makeWriter, bool isAlwaysNumbered)
      : makeWriter_(std::move(makeWriter)), isAlwaysNumbered_(isAlwaysNumbered)
  {
  }

  /// Also fails without @p overwrite when there is a file already that one of the run's images may get.
  bool Open(const std::string& path, bool overwrite, const TImageShape& shape, const TRunFacts& facts) override;
  bool Write(TPixelBytes pixels, const TImageLabel& label) override;
  bool Close(const std::optional<TFrameCounts>& counts) override;
  long ImagesWritten() const override { return imagesWritten_; }
  const std::string& Error() const override { return error_; }

private:
  bool Fail(const std::string& message);
  std::string FileOf(const TImageLabel& label) const;

  MakeWriter makeWriter_;
  bool isAlwaysNumbered_;
  std::string path_;
  bool overwrite_ = false;
  TImageShape shape_;
  TRunFacts facts_;
  long imagesWritten_ = 0;
  std::string error_;
};

/// Whether a file is there that may not be replaced, of those that images with these numbers (none: with any number)
/// get when "run.fits" is written in files of one image each; the message then says so.
bool HasProtectedImageFile(const std::string& path, bool overwrite, const TNumberRanges& numbers,
                           std::string& message);

} // namespace vxtool
