// SPDX-License-Identifier: MIT
// Opens the places of a run's images in its files.
#pragma once

#include "spool/TRandomAccessMultiImageSpooler.h"
#include "spool/TSpoolLayout.h"

#include <memory>

class TSpoolFault;
class TSpoolFileSpooler;
class TSpoolIndex;

/// The spooler of a run: its images are the places of the layout, each for one or more of the run's images. They are
/// filled in staging memory and written as a whole when they are full, or when they are unlocked once more; those of
/// a place that takes long to fill once a second. Images that are written are recorded in the index; failures are
/// raised as the run's fault. Owned by the run's pipeline, which also owns what this borrows.
class TSpoolImageSpooler final : public TRandomAccessMultiImageSpooler
{
public:
  TSpoolImageSpooler(TSpoolFileSpooler* files, const TSpoolLayout& layout, TSpoolIndex* index, TSpoolFault* fault);
  /// Closes what is still open, before the staging memory is freed.
  ~TSpoolImageSpooler() override;

  /// As the base, but fails once the run has a fault.
  int OpenImage(unsigned int index, int mode, IImage*& image) override;
  IImage* CreateOffsetMultiImage(IImage* file, std::uint64_t imageSizeBytes, unsigned int position) override;

private:
  class TPlace;
  class TStagingPool;

  TSpoolFileSpooler* const files_;
  const TSpoolLayout layout_;
  TSpoolIndex* const index_;
  TSpoolFault* const fault_;
  const std::unique_ptr<TStagingPool> staging_;
};
