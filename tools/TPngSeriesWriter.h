// SPDX-License-Identifier: MIT
// Writes images as PNG pictures, one file each.
#pragma once

#include "tools/IImageWriter.h"

namespace vxtool {

/// Pictures as TPngPreviewWriter makes them, each stretched by its own brightness. One planned image gets the file
/// itself; of several, "run.png" becomes "run-0000012.png" for image 12. One thread at a time; errors as
/// IImageWriter says.
class TPngSeriesWriter final : public IImageWriter
{
public:
  bool Open(const std::string& path, bool overwrite, const TImageShape& shape, const TRunFacts& facts) override;
  bool Write(TPixelBytes pixels, const TImageLabel& label) override;
  bool Close(const std::optional<TFrameCounts>& counts) override;
  long ImagesWritten() const override { return imagesWritten_; }
  const std::string& Error() const override { return error_; }

private:
  bool Fail(const std::string& message);
  std::string FileOf(const TImageLabel& label) const;

  std::string path_;
  bool overwrite_ = false;
  TImageShape shape_;
  TRunFacts facts_;
  long imagesWritten_ = 0;
  std::string error_;
};

} // namespace vxtool
