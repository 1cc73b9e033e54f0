// SPDX-License-Identifier: MIT
// Writes nothing but pixels, and a description beside them.
#pragma once

#include "tools/IImageWriter.h"
#include "tools/TOutputFile.h"

#include <vector>

namespace vxtool {

/// A file with the pixels of all images, row after row and image after image, little-endian, and beside it, with
/// ".json" behind its name, a description of the run and of each image. The description is there from the
/// beginning, with "complete": false and without images, and is written anew by Close(). Owns its files; one
/// thread at a time; errors as IImageWriter says.
class TRawStackWriter final : public IImageWriter
{
public:
  bool Open(const std::string& path, bool overwrite, const TImageShape& shape, const TRunFacts& facts) override;
  bool Write(TPixelBytes pixels, const TImageLabel& label) override;
  bool Close(const std::optional<TFrameCounts>& counts) override;
  long ImagesWritten() const override { return static_cast<long>(labels_.size()); }
  const std::string& Error() const override { return error_; }

private:
  bool Fail(const std::string& message);
  std::string Description(const std::optional<TFrameCounts>& counts, bool isClosed) const;

  TOutputFile file_;
  TOutputFile description_;
  std::string path_;
  TImageShape shape_;
  TRunFacts facts_;
  std::vector<TImageLabel> labels_; // of the images written
  std::string error_;
};

} // namespace vxtool
