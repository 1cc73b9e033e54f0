// SPDX-License-Identifier: MIT
// Opens and closes the files of a command.
#include "tools/TOutputs.h"

#include "tools/Messages.h"
#include "tools/TFitsCubeWriter.h"
#ifdef VXTOOL_HAS_HDF5
#include "tools/THdf5Writer.h"
#endif
#include "tools/TImageFilesWriter.h"
#include "tools/TOmeZarrWriter.h"
#include "tools/TPngPreviewWriter.h"
#include "tools/TRawStackWriter.h"
#include "tools/TTiffStackWriter.h"

namespace vxtool {

namespace {

TZarrOptions ZarrOptions(const TOutputOptions& options)
{
  TZarrOptions zarr;
  zarr.compression = options.compression.value_or(zarr.compression);
  zarr.chunkImages = options.chunkImages;
  zarr.pyramidLevels = options.pyramidLevels.value_or(zarr.pyramidLevels);
  zarr.hasFiveAxes = options.hasFiveAxes.value_or(zarr.hasFiveAxes);
  zarr.threads = options.threads.value_or(zarr.threads);
  return zarr;
}

std::unique_ptr<IImageWriter> MakeFileWriter(FileFormat format, const TOutputOptions& options)
{
  switch (format) {
  case FileFormat::Tiff:
    return std::make_unique<TTiffStackWriter>(TTiffStackWriter::Reach::Classic);
  case FileFormat::BigTiff:
    return std::make_unique<TTiffStackWriter>(TTiffStackWriter::Reach::Big);
  case FileFormat::Fits:
    return std::make_unique<TFitsCubeWriter>();
  case FileFormat::Raw:
    return std::make_unique<TRawStackWriter>();
  case FileFormat::OmeZarr:
    return std::make_unique<TOmeZarrWriter>(ZarrOptions(options));
  case FileFormat::Hdf5:
#ifdef VXTOOL_HAS_HDF5
    return std::make_unique<THdf5Writer>(options.compression.value_or(TCompression{Codec::None}),
                                         options.threads.value_or(TZarrOptions{}.threads));
#else
    break; // the options do not have it
#endif
  case FileFormat::Png:
    return std::make_unique<TPngPreviewWriter>();
  }
  return nullptr;
}

std::unique_ptr<IImageWriter> MakeImageWriter(const TOutputOptions& options)
{
  const FileFormat format = options.format.value_or(FileFormat::Tiff);
  if (!options.isFileForEach && format != FileFormat::Png) return MakeFileWriter(format, options);
  return std::make_unique<TImageFilesWriter>([=] { return MakeFileWriter(format, options); },
                                             options.isFileForEach);
}

} // namespace

TOutputs::TOutputs(const TOutputOptions& options) : options_(options)
{
  if (!options.file.empty()) images_ = MakeImageWriter(options);
  if (!options.preview.empty()) preview_ = std::make_unique<TPngPreviewWriter>();
}

bool TOutputs::Open(const TImageShape& shape, const TRunFacts& facts)
{
  if (images_ && !images_->Open(options_.file, options_.overwrite, shape, facts)) {
    Say(images_->Error());
    return false;
  }
  if (preview_ && !preview_->Open(options_.preview, options_.overwrite, shape, facts)) {
    Say(preview_->Error());
    if (images_) images_->Close(std::nullopt); // leaves no file behind: it has no image
    return false;
  }
  SayNote(); // before a long run
  return true;
}

void TOutputs::SayNote()
{
  const std::string note = images_ ? images_->Note() : "";
  if (note != said_ && !note.empty()) Say(note);
  said_ = note;
}

bool TOutputs::Close(TPixelBytes last, const TImageLabel& label, const TFrameCounts& counts)
{
  const bool areImagesWhole = CloseImages(counts);
  return ClosePreview(last, label, counts) && areImagesWhole;
}

bool TOutputs::CloseImages(const TFrameCounts& counts)
{
  if (!images_) return true;
  const bool wasFailed = !images_->Error().empty();
  const bool isClosed = images_->Close(counts);
  SayNote();
  if (isClosed) return true;
  if (!wasFailed) Say(images_->Error());
  return false;
}

bool TOutputs::ClosePreview(TPixelBytes last, const TImageLabel& label, const TFrameCounts& counts)
{
  if (!preview_) return true;
  if (!last.empty()) preview_->Write(last, label);
  if (preview_->Close(counts) || last.empty()) return true;
  Say(preview_->Error());
  return false;
}

} // namespace vxtool
