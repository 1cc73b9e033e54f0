// SPDX-License-Identifier: MIT
// The files that a command makes of images.
#pragma once

#include "tools/IImageWriter.h"
#include "tools/Options.h"

#include <memory>

namespace vxtool {

/// The file of the images and the picture of the last one, either or neither of them. Owned by a command; one
/// thread at a time. Operations return false on failure, after a message on standard error.
class TOutputs final
{
public:
  explicit TOutputs(const TOutputOptions& options);

  /// Creates the files, both or none.
  bool Open(const TImageShape& shape, const TRunFacts& facts);
  /// Where the images go; null when no file is asked for.
  IImageWriter* Images() const { return images_.get(); }
  bool HasPreview() const { return preview_ != nullptr; }
  /// Completes the files. A failure of a write is not reported a second time.
  /// @param last  the newest image, empty when there was none
  bool Close(TPixelBytes last, const TImageLabel& label, const TFrameCounts& counts);
  /// Images in the file; final after Close().
  long ImagesWritten() const { return images_ ? images_->ImagesWritten() : 0; }

private:
  void SayNote();
  bool CloseImages(const TFrameCounts& counts);
  bool ClosePreview(TPixelBytes last, const TImageLabel& label, const TFrameCounts& counts);

  TOutputOptions options_;
  std::string said_;
  std::unique_ptr<IImageWriter> images_;
  std::unique_ptr<IImageWriter> preview_;
};

} // namespace vxtool
