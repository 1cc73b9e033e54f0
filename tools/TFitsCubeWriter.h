// SPDX-License-Identifier: MIT
// Writes a FITS cube: one plane an image, and a table of image numbers and timestamps.
#pragma once

#include "tools/IImageWriter.h"

#include <fitsio.h>
#include <vector>

namespace vxtool {

/// A FITS primary array of three axes, in pixels of 8 bits, 16 bits unsigned (BZERO 32768) or 32 bits signed,
/// followed by the binary table FRAMES with number and clocks of each plane. NAXIS3 grows with every image,
/// so that it is true however the run ends; after a full disk the file is cut to whole planes and NAXIS3 set to
/// them. Owns its file; one thread at a time; errors as IImageWriter says.
class TFitsCubeWriter final : public IImageWriter
{
public:
  TFitsCubeWriter() = default;
  ~TFitsCubeWriter() override;
  TFitsCubeWriter(const TFitsCubeWriter&) = delete;
  TFitsCubeWriter& operator=(const TFitsCubeWriter&) = delete;

  bool Open(const std::string& path, bool overwrite, const TImageShape& shape, const TRunFacts& facts) override;
  bool Write(TPixelBytes pixels, const TImageLabel& label) override;
  bool Close(const TRunTotals& totals) override;
  long ImagesWritten() const override { return static_cast<long>(labels_.size()); }
  const std::string& Error() const override { return error_; }

private:
  bool Fail(const std::string& message);
  bool FailFits(int status);
  void WriteHeader(const TRunFacts& facts, int* status);
  void WriteSensorFacts(const TRunFacts& facts, int* status);
  void WriteTotals(const TRunTotals& totals, int* status);
  void WriteFrameTable(int* status);
  void CutToWholeImages(const TRunTotals& totals);

  std::string path_;
  std::string error_;
  TImageShape shape_;
  fitsfile* file_ = nullptr;
  long long dataStart_ = 0;
  std::vector<TImageLabel> labels_; // of the images written
};

} // namespace vxtool
