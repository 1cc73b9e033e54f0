// SPDX-License-Identifier: MIT
// Writes one image as a PNG picture that shows something to a person.
#pragma once

#include "tools/IImageWriter.h"

#include <cstdio>

namespace vxtool {

/// An 8-bit grey PNG picture of one image, stretched by its own brightness. It has one image: a
/// second one is an error. Owns its file; one thread at a time; errors as IImageWriter says.
class TPngPreviewWriter final : public IImageWriter
{
public:
  TPngPreviewWriter() = default;
  ~TPngPreviewWriter() override;
  TPngPreviewWriter(const TPngPreviewWriter&) = delete;
  TPngPreviewWriter& operator=(const TPngPreviewWriter&) = delete;

  bool Open(const std::string& path, bool overwrite, const TImageShape& shape, const TRunFacts& facts) override;
  bool Write(TPixelBytes pixels, const TImageLabel& label) override;
  bool Close(const std::optional<TFrameCounts>& counts) override;
  long ImagesWritten() const override { return imagesWritten_; }
  const std::string& Error() const override { return error_; }

private:
  bool Fail(const std::string& message);

  std::string path_;
  std::string error_;
  TImageShape shape_;
  std::FILE* file_ = nullptr;
  long imagesWritten_ = 0;
};

} // namespace vxtool
