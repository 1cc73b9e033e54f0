// SPDX-License-Identifier: MIT
// PNG output by libpng's simplified interface.
#include "tools/TPngPreviewWriter.h"

#include "tools/TOutputFile.h"
#include "tools/TPixelSample.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <png.h>
#include <system_error>
#include <unistd.h>
#include <vector>

namespace vxtool {

namespace {

constexpr double kFaintMedian = 0.1;
constexpr double kAsinhStrength = 50.0;
constexpr std::size_t kMaxSample = 1'000'000;

template <typename Pixel>
std::vector<unsigned char> GreyLevels(TPixelBytes bytes, double black, double white, bool isFaint)
{
  const std::size_t count = bytes.size() / sizeof(Pixel);
  const auto pixelAt = [bytes](std::size_t index) {
    Pixel value;
    std::memcpy(&value, bytes.data() + index * sizeof(Pixel), sizeof value);
    return static_cast<double>(value);
  };
  std::vector<unsigned char> grey(count);
  for (std::size_t index = 0; index < count; ++index) {
    const double linear = std::clamp((pixelAt(index) - black) / (white - black), 0.0, 1.0);
    const double level = isFaint ? std::asinh(kAsinhStrength * linear) / std::asinh(kAsinhStrength) : linear;
    grey[index] = static_cast<unsigned char>(std::lround(255.0 * level));
  }
  return grey;
}

// 8-bit grey levels of an image. Between black and white the scale is linear, or, when the median lies within the lowest
// tenth (few bright things on a dark background, as stars are), compressed by an inverse hyperbolic sine so that faint
// things show.
std::vector<unsigned char> StretchImage(TPixelBytes pixels, PixelDepth depth)
{
  TPixelSample sample(pixels, depth, kMaxSample);
  if (sample.IsEmpty()) return {};
  const double black = sample.Quantile(kBlackQuantile);
  const double white = std::max(sample.Quantile(kWhiteQuantile), black + 1.0);
  const bool isFaint = (sample.Quantile(0.5) - black) / (white - black) < kFaintMedian;
  if (depth == PixelDepth::Bits8) return GreyLevels<std::uint8_t>(pixels, black, white, isFaint);
  if (depth == PixelDepth::Bits16) return GreyLevels<std::uint16_t>(pixels, black, white, isFaint);
  return GreyLevels<std::int32_t>(pixels, black, white, isFaint);
}

} // namespace

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

bool TPngPreviewWriter::Close(const std::optional<TFrameCounts>&)
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
