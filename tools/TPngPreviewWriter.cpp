// SPDX-License-Identifier: MIT
// PNG output by libpng's simplified interface.
#include "tools/TPngPreviewWriter.h"

#include "tools/TOutputFile.h"

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

constexpr double kBlackQuantile = 0.001;
constexpr double kWhiteQuantile = 0.9995;
constexpr double kFaintMedian = 0.1;
constexpr double kAsinhStrength = 50.0;
constexpr std::size_t kSampleSize = 1'000'000;

double Quantile(std::vector<double>& sample, double quantile)
{
  const auto index = std::lround(quantile * static_cast<double>(sample.size() - 1));
  std::nth_element(sample.begin(), sample.begin() + index, sample.end());
  return sample[static_cast<std::size_t>(index)];
}

template <typename Pixel>
std::vector<unsigned char> Stretch(TPixelBytes bytes)
{
  const std::size_t count = bytes.size() / sizeof(Pixel);
  if (count == 0) return {};
  const auto pixelAt = [bytes](std::size_t index) {
    Pixel value;
    std::memcpy(&value, bytes.data() + index * sizeof(Pixel), sizeof value);
    return static_cast<double>(value);
  };
  std::vector<double> sample;
  const std::size_t step = count / kSampleSize + 1;
  for (std::size_t index = 0; index < count; index += step) sample.push_back(pixelAt(index));
  const double black = Quantile(sample, kBlackQuantile);
  const double white = std::max(Quantile(sample, kWhiteQuantile), black + 1.0);
  const bool isFaint = (Quantile(sample, 0.5) - black) / (white - black) < kFaintMedian;

  std::vector<unsigned char> grey(count);
  for (std::size_t index = 0; index < count; ++index) {
    const double linear = std::clamp((pixelAt(index) - black) / (white - black), 0.0, 1.0);
    const double level = isFaint ? std::asinh(kAsinhStrength * linear) / std::asinh(kAsinhStrength) : linear;
    grey[index] = static_cast<unsigned char>(std::lround(255.0 * level));
  }
  return grey;
}

// 8-bit grey levels of an image. Black is the darkest per mille of the pixels and white the brightest half per
// mille. Between them the scale is linear, or, when the median lies within the lowest tenth (few bright things on
// a dark background, as stars are), compressed by an inverse hyperbolic sine so that faint things show.
std::vector<unsigned char> StretchImage(TPixelBytes pixels, PixelDepth depth)
{
  if (depth == PixelDepth::Bits8) return Stretch<std::uint8_t>(pixels);
  return depth == PixelDepth::Bits16 ? Stretch<std::uint16_t>(pixels) : Stretch<std::int32_t>(pixels);
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
