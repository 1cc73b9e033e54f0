// SPDX-License-Identifier: MIT
// What every output format can do: open a file, add images, close it with the true count.
#pragma once

#include "tools/ImageData.h"

namespace vxtool {

/// A file that images are written to. Owned by the code that made it; one thread at a time. Every operation returns
/// false on failure, and Error() then says in one line what failed and why. After a failed Write() the file is
/// still to be closed: it then has the images written before, and its headers say how many these are.
class IImageWriter
{
public:
  virtual ~IImageWriter() = default;
  /// Creates the file. A regular file that exists is replaced only with @p overwrite.
  virtual bool Open(const std::string& path, bool overwrite, const TImageShape& shape, const TRunFacts& facts) = 0;
  /// Adds one image of exactly the shape's bytes.
  virtual bool Write(TPixelBytes pixels, const TImageLabel& label) = 0;
  /// Completes the file. One without an image is removed: it would not be a valid file. @p counts as they stand
  /// before closing, nothing when they are not known; ImagesWritten() says how many images are in the file in the
  /// end.
  virtual bool Close(const std::optional<TFrameCounts>& counts) = 0;
  /// Images in the file. Close() may lower it when the disk is too full for the directory behind the images.
  virtual long ImagesWritten() const = 0;
  /// What users should know of a file of so many images as are planned or written, in one line; "" for nothing.
  virtual std::string Note() const { return ""; }
  /// The first failure, "" when there was none.
  virtual const std::string& Error() const = 0;
};

} // namespace vxtool
