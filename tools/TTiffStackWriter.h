// SPDX-License-Identifier: MIT
// Writes a TIFF or BigTIFF stack that opens as a time series.
#pragma once

#include "tools/IImageWriter.h"
#include "tools/TOutputFile.h"

#include <chrono>
#include <vector>

namespace vxtool {

/// A TIFF file, uncompressed, one strip an image. All pixel data lies in one piece behind the first directory,
/// because the programs that read "ImageJ" time series expect the images without gaps; that is why the structure is
/// written here and not by a TIFF library. What follows the pixels is decided by Close(), which knows how many there
/// are: the directories of the other images, or, in a classic TIFF above 4 GB, whose offsets cannot reach there, a
/// list of the images as text. A file that was never closed has the images of all but the last moment for those
/// programs, and the first one for others. Owns its file; one thread at a time; errors as IImageWriter says.
class TTiffStackWriter final : public IImageWriter
{
public:
  /// What the offsets of the file can reach.
  enum class Reach
  {
    Classic, ///< 4 GB
    Big,     ///< BigTIFF: any length, in a form that fewer programs read
  };

  explicit TTiffStackWriter(Reach reach) : isBig_(reach == Reach::Big) {}

  bool Open(const std::string& path, bool overwrite, const TImageShape& shape, const TRunFacts& facts) override;
  bool Write(TPixelBytes pixels, const TImageLabel& label) override;
  bool Close(const std::optional<TFrameCounts>& counts) override;
  std::string Note() const override;
  long ImagesWritten() const override { return static_cast<long>(labels_.size()); }
  const std::string& Error() const override { return error_; }

private:
  using Clock = std::chrono::steady_clock;

  bool Fail(const std::string& message);
  /// Whether so many images and their directories are within reach.
  bool HasPages(std::uint64_t images) const;
  bool WriteFirstPage(const std::string& description, std::uint64_t nextDirectory);
  /// What follows the pixels.
  bool WriteTail() { return HasPages(labels_.size()) ? WriteOtherPages() : WriteList(); }
  bool WriteOtherPages();
  bool WriteList();
  std::vector<std::byte> MakeDirectory(std::uint64_t start, std::size_t page, const std::string& description,
                                       std::uint64_t nextDirectory) const;
  std::uint64_t ImageOffset(std::size_t page) const;
  std::uint64_t TailStart() const;
  std::string Description(const std::optional<TFrameCounts>& counts, bool isClosed) const;

  TOutputFile file_;
  std::string path_;
  TImageShape shape_;
  TRunFacts facts_;
  std::vector<TImageLabel> labels_; // of the images written
  std::string error_;
  bool isBig_;
  std::uint64_t dataStart_ = 0; // where the pixels begin: behind the first directory and its texts
  Clock::time_point described_; // when the first page was written
};

} // namespace vxtool
