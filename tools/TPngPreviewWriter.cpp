// SPDX-License-Identifier: MIT
// PNG output by libpng's simplified interface.
#include "tools/TPngPreviewWriter.h"

#include "tools/StretchImage.h"
#include "tools/TOutputFile.h"

#include <cerrno>
#include <png.h>
#include <system_error>
#include <unistd.h>

namespace vxtool {

TPngPreviewWriter::~TPngPreviewWriter()
{
  if (file_) std::fclose(file_);
}

bool TPngPreviewWriter::Fail(const std::string& message)
{
  if (error_.empty()) error_ = path_ + ": " + message;
  return false;
}

bool TPngPreviewWriter::Open(const std::string& path, bool overwrite, const TImageShape& shape, const TRunFacts&)
{
  path_ = path;
  shape_ = shape;
  if (IsProtectedFile(path, overwrite, error_)) return false;
  file_ = std::fopen(path.c_str(), "wbe");
  return file_ || Fail("cannot be created: " + std::generic_category().message(errno));
}

bool TPngPreviewWriter::Write(TPixelBytes pixels, const TImageLabel&)
{
  if (!error_.empty()) return false;
  if (pixels.size() != shape_.Bytes()) return Fail("the image has another size than the run");
  if (imagesWritten_ != 0) return Fail("a preview holds one image");
  const std::vector<unsigned char> grey = StretchImage(pixels, shape_.depth);
  png_image image = {};
  image.version = PNG_IMAGE_VERSION;
  image.width = static_cast<png_uint_32>(shape_.width);
  image.height = static_cast<png_uint_32>(shape_.height);
  image.format = PNG_FORMAT_GRAY;
  image.flags = PNG_IMAGE_FLAG_FAST;
  errno = 0;
  if (!png_image_write_to_stdio(&image, file_, 0, grey.data(), 0, nullptr))
    return Fail(std::string("cannot be written: ") +
                (errno != 0 ? std::generic_category().message(errno) : std::string(image.message)));
  imagesWritten_ = 1;
  return true;
}

bool TPngPreviewWriter::Close(const TRunTotals&)
{
  if (!file_) return error_.empty();
  errno = 0;
  const bool isClosed = std::fclose(file_) == 0;
  file_ = nullptr;
  if (!isClosed) {
    imagesWritten_ = 0;
    Fail("cannot be written: " + std::generic_category().message(errno));
  }
  std::string message;
  if (imagesWritten_ == 0 && IsProtectedFile(path_, false, message))
    unlink(path_.c_str()); // a regular file, empty or cut
  return error_.empty();
}

} // namespace vxtool
