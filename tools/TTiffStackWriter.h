// SPDX-License-Identifier: MIT
// Writes a TIFF or BigTIFF stack that opens as a time series.
#pragma once

#include "tools/IImageWriter.h"
#include "tools/TOutputFile.h"

#include <vector>

namespace vxtool {

/// A multi-page TIFF file, uncompressed, one strip a page: BigTIFF when it may pass 4 GB or when the number of
/// images is not known beforehand. All pixel data lies in one piece behind the first directory and the other
/// directories behind the pixel data, because the programs that read "ImageJ" time series expect the images
/// without gaps; that is why the structure is written here and not by a TIFF library. The file is complete after
/// Close(); a file that was never closed still shows its first page. Owns its file; one thread at a time; errors
/// as IImageWriter says.
class TTiffStackWriter final : public IImageWriter
{
public:
  bool Open(const std::string& path, bool overwrite, const TImageShape& shape, const TRunFacts& facts) override;
  bool Write(TPixelBytes pixels, const TImageLabel& label) override;
  bool Close(const TFrameCounts& counts) override;
  long ImagesWritten() const override { return static_cast<long>(labels_.size()); }
  const std::string& Error() const override { return error_; }

  bool IsBigTiff() const { return isBig_; }

private:
  bool Fail(const std::string& message);
  bool WriteFirstPage(const std::string& description, std::uint64_t nextDirectory);
  bool WriteOtherPages();
  std::vector<std::byte> MakeDirectory(std::uint64_t start, std::size_t page, const std::string& description,
                                       std::uint64_t nextDirectory) const;
  std::uint64_t ImageOffset(std::size_t page) const;
  std::uint64_t DirectoriesStart() const;
  std::string Description(const TFrameCounts* counts) const;

  TOutputFile file_;
  TImageShape shape_;
  TRunFacts facts_;
  std::vector<TImageLabel> labels_; // of the images written
  std::string error_;
  bool isBig_ = false;
  std::uint64_t dataStart_ = 0; // where the pixels begin: behind the first directory and its texts
};

} // namespace vxtool
