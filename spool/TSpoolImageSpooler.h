// SPDX-License-Identifier: MIT
// Hands out the places of a run's images in its files.
#pragma once

#include "spool/TRandomAccessMultiImageSpooler.h"
#include "spool/TSpoolLayout.h"
#include "spool/TStagingPool.h"

class TSpoolFault;
class TSpoolIndex;

/// The spooler of a run: its images are the places of the layout, each of one or more of the run's images, filled in
/// staging memory and written as a whole (TSpooledImage). The file spooler must be one whose images are TSpoolFile.
/// Owned by the run's pipeline, which also owns what this borrows.
class TSpoolImageSpooler final : public TRandomAccessMultiImageSpooler
{
public:
  TSpoolImageSpooler(ISpooler* fileSpooler, const TSpoolLayout& layout, TSpoolIndex* index, TSpoolFault* fault);
  /// Closes what is open still, while there is the staging memory.
  ~TSpoolImageSpooler() override;

  /// As the base, but fails once the run has a fault.
  int OpenImage(unsigned int index, int mode, IImage*& image) override;
  IImage* CreateOffsetMultiImage(IImage* file, std::uint64_t imageSizeBytes, unsigned int position) override;

private:
  const TSpoolLayout layout_;
  TSpoolIndex* const index_;
  TSpoolFault* const fault_;
  TStagingPool staging_;
};
