// SPDX-License-Identifier: MIT
// Opens and closes the files of a command.
#include "tools/TOutputs.h"

#include "tools/MakeImageWriter.h"
#include "tools/ToolText.h"
#include "tools/TPngPreviewWriter.h"

namespace vxtool {

TOutputs::TOutputs(const TOutputOptions& options) : options_(options)
{
  if (!options.file.empty()) images_ = MakeImageWriter(options.format.value_or(FileFormat::Tiff));
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
    if (images_) images_->Close(TRunTotals{}); // leaves no file behind: it has no image
    return false;
  }
  return true;
}

bool TOutputs::Close(TPixelBytes last, const TImageLabel& label, const TRunTotals& totals)
{
  const bool areImagesWhole = CloseImages(totals);
  return ClosePreview(last, label, totals) && areImagesWhole;
}

bool TOutputs::CloseImages(const TRunTotals& totals)
{
  if (!images_) return true;
  const bool wasFailed = !images_->Error().empty();
  if (images_->Close(totals)) return true;
  if (!wasFailed) Say(images_->Error());
  return false;
}

bool TOutputs::ClosePreview(TPixelBytes last, const TImageLabel& label, const TRunTotals& totals)
{
  if (!preview_) return true;
  if (!last.empty()) preview_->Write(last, label);
  if (preview_->Close(totals) || last.empty()) return true;
  Say(preview_->Error());
  return false;
}

} // namespace vxtool
