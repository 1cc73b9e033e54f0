// SPDX-License-Identifier: MIT
// Writes images as an array in chunks, for programs that open large arrays a part at a time.
#pragma once

#include "tools/IImageWriter.h"
#include "tools/Options.h"
#include "tools/TDisplayWindow.h"
#include "tools/TOutputFile.h"

#include <vector>

namespace vxtool {

/// A directory in the format OME-Zarr 0.4 (Zarr 2) with the images of a run in one array of time, rows and columns, and
/// in further arrays of smaller images if asked for. Each chunk is a file of whole images, compressed with Blosc. What is
/// known of each image is in arrays of its own. The shape of the arrays counts the images of whole chunks while they are
/// written, so that they are valid at any time; Close() adds the last chunk, and "complete" to the description. Owns its
/// files; one thread at a time; errors as IImageWriter says.
class TOmeZarrWriter final : public IImageWriter
{
public:
  explicit TOmeZarrWriter(const TZarrOptions& options) : options_(options) {}

  bool Open(const std::string& path, bool overwrite, const TImageShape& shape, const TRunFacts& facts) override;
  bool Write(TPixelBytes pixels, const TImageLabel& label) override;
  bool Close(const std::optional<TFrameCounts>& counts) override;
  long ImagesWritten() const override { return static_cast<long>(labels_.size()); }
  const std::string& Error() const override { return error_; }

private:
  /// Images of one size.
  struct TLevel
  {
    std::string name; // of its array
    TImageShape shape;
    std::vector<std::byte> chunk;

    std::span<std::byte> Image(std::size_t place)
    {
      return std::span(chunk).subspan(place * shape.Bytes(), shape.Bytes());
    }
  };

  bool Fail(const std::string& message);
  bool FailFor(const std::string& path, const std::string& problem);
  bool MakeRoom(bool overwrite);
  bool IsReplaceable() const;
  bool ChooseChunk();
  bool ChooseLevels();
  TPixelBytes Filled(TLevel& level) const;
  /// @param first  pixels of the largest images
  bool WriteChunk(TPixelBytes first);
  bool WriteLevel(const TLevel& level, TPixelBytes bytes);
  std::size_t ChunkNumber() const { return imagesOnDisk_ / imagesInChunk_; }
  bool WriteFile(const std::string& name, std::span<const std::byte> bytes);
  bool WriteText(const std::string& name, const std::string& text);
  bool WriteImageArrays();
  bool WriteColumn(const std::string& name, const std::vector<std::int64_t>& values);
  bool WriteColumns();
  bool WriteDescription(const std::optional<TFrameCounts>& counts, bool isClosed);
  void RemoveChunk();

  TZarrOptions options_;
  std::string path_;
  TImageShape shape_;
  TRunFacts facts_;
  TOutputFile lock_; // the directory's ".zgroup": another program that writes it finds this one
  std::vector<TLevel> levels_;
  std::vector<std::byte> compressed_;
  std::size_t imagesInChunk_ = 0;
  std::size_t imagesOnDisk_ = 0;    // of the chunks written
  std::size_t bufferedImages_ = 0;  // of the next chunk
  std::vector<TImageLabel> labels_; // of the images on disk and of those buffered
  TDisplayWindow window_;
  bool lacksRoom_ = false; // for the file that failed last
  std::string error_;
};

} // namespace vxtool
