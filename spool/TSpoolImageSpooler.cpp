// SPDX-License-Identifier: MIT
// Hands out the places of a run's images in its files.
#include "spool/TSpoolImageSpooler.h"

#include "spool/TSpooledImage.h"
#include "spool/TSpoolFault.h"
#include "spool/TSpoolFile.h"

#include <cerrno>
#include <memory>

TSpoolImageSpooler::TSpoolImageSpooler(ISpooler* fileSpooler, const TSpoolLayout& layout, TSpoolIndex* index,
                                       TSpoolFault* fault)
    : TRandomAccessMultiImageSpooler(fileSpooler, layout.placesPerFile),
      layout_(layout),
      index_(index),
      fault_(fault),
      staging_(TSpooledImage::PieceBytes(layout.PlaceBytes()))
{
  SetImageSizeBytes(layout.PlaceBytes());
}

TSpoolImageSpooler::~TSpoolImageSpooler()
{
  CloseAll();
}

int TSpoolImageSpooler::OpenImage(unsigned int index, int mode, IImage*& image)
{
  if (fault_->IsRaised()) return EIO;
  return TRandomAccessMultiImageSpooler::OpenImage(index, mode, image);
}

IImage* TSpoolImageSpooler::CreateOffsetMultiImage(IImage* file, std::uint64_t imageSizeBytes,
                                                   unsigned int position)
{
  auto* const spoolFile = static_cast<TSpoolFile*>(file);
  const std::uint64_t offset = position * imageSizeBytes;
  const std::uint64_t firstImage = std::uint64_t{spoolFile->Number()} * layout_.ImagesPerFile() +
                                   std::uint64_t{position} * layout_.imagesPerPlace;
  const TSpooledImage::TPlace place{firstImage, offset, layout_.imageSizeBytes, layout_.imagesPerPlace};
  return std::make_unique<TSpooledImage>(place, spoolFile, &staging_, index_, fault_).release();
}
