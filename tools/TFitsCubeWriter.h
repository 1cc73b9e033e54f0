// SPDX-License-Identifier: MIT
// Writes a FITS cube, one plane an image and a table of their numbers and times, or an image.
#pragma once

#include "tools/FitsUnits.h"
#include "tools/IImageWriter.h"
#include "tools/TOutputFile.h"

#include <vector>

namespace vxtool {

/// A FITS primary array of three axes, in pixels of 8 bits, 16 bits unsigned (BZERO 32768) or 32 bits signed,
/// followed by the binary table FRAMES with number and times of each plane. An only image has two axes, and cards in
/// place of the table. NAXIS3 grows with every image; after a full disk the file is cut to whole planes, and the table
/// follows if there is room for it. CFITSIO makes header and table; pixels are swapped and written in large pieces,
/// which is several times as fast as through CFITSIO. Owns its file; one thread at a time; errors as IImageWriter says.
class TFitsCubeWriter final : public IImageWriter
{
public:
  bool Open(const std::string& path, bool overwrite, const TImageShape& shape, const TRunFacts& facts) override;
  bool Write(TPixelBytes pixels, const TImageLabel& label) override;
  bool Close(const std::optional<TFrameCounts>& counts) override;
  long ImagesWritten() const override { return static_cast<long>(labels_.size()); }
  const std::string& Error() const override { return error_; }

private:
  bool Fail(const std::string& message);
  bool WritePixels(std::uint64_t offset, TPixelBytes pixels);
  bool WriteImageCount();
  /// Fills the last block after the images with zeros and cuts what follows. On a full disk the newest images are
  /// dropped to make room.
  bool EndImages();
  bool WriteHeader(const TFitsProgress& progress);
  bool WriteTable();
  std::uint64_t ImagesEnd() const { return imagesStart_ + labels_.size() * shape_.Bytes(); }

  std::string path_;
  std::string error_;
  TImageShape shape_;
  TRunFacts facts_;
  TOutputFile file_;
  std::uint64_t imagesStart_ = 0;
  std::vector<std::byte> swapped_;
  std::vector<TImageLabel> labels_; // of the images written
};

} // namespace vxtool
