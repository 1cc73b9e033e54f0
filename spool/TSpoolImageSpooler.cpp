// SPDX-License-Identifier: MIT
// Hands out the places of a run's images in its files.
#include "spool/TSpoolImageSpooler.h"

#include "spool/TOffsetMultiImage.h"
#include "spool/TSpooledImage.h"
#include "spool/TSpoolFault.h"
#include "spool/TSpoolFile.h"
#include "spool/TStagedImage.h"

#include <cerrno>
#include <memory>
#include <utility>

TSpoolImageSpooler::TSpoolImageSpooler(ISpooler* fileSpooler, const TSpoolLayout& layout, TSpoolIndex* index,
                                       TSpoolFault* fault)
    : TRandomAccessMultiImageSpooler(fileSpooler, layout.placesPerFile),
      layout_(layout),
      index_(index),
      fault_(fault),
      staging_(TStagedImage::PieceBytes(layout.PlaceBytes()))
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
  const auto image = [&](auto view) {
    return std::make_unique<TSpooledImage>(std::move(view), place, spoolFile, index_, fault_).release();
  };
  if (layout_.mapped) return image(std::make_unique<TOffsetMultiImage>(file, imageSizeBytes, position));
  return image(std::make_unique<TStagedImage>(spoolFile, &staging_, imageSizeBytes, offset));
}
