// SPDX-License-Identifier: MIT
// Chooses the writer.
#include "tools/MakeImageWriter.h"

#include "tools/TFitsCubeWriter.h"
#include "tools/TPngSeriesWriter.h"
#include "tools/TRawStackWriter.h"
#include "tools/TTiffStackWriter.h"

namespace vxtool {

std::unique_ptr<IImageWriter> MakeImageWriter(FileFormat format)
{
  switch (format) {
  case FileFormat::Tiff:
    return std::make_unique<TTiffStackWriter>();
  case FileFormat::Fits:
    return std::make_unique<TFitsCubeWriter>();
  case FileFormat::Raw:
    return std::make_unique<TRawStackWriter>();
  case FileFormat::Png:
    return std::make_unique<TPngSeriesWriter>();
  }
  return nullptr;
}

} // namespace vxtool
