// SPDX-License-Identifier: MIT
// The place of one or more images of a run, with the account of what became of them.
#pragma once

#include "spool/IImage.h"
#include "spool/TSpoolIndex.h"

#include <chrono>
#include <cstdint>
#include <memory>
#include <vector>

class TOffsetMultiImage;
class TSpoolFault;
class TSpoolFile;
class TStagedImage;

/// The place of one or more images of a run in a spool file. When it is unlocked, its images are on their way to
/// the disk and get their records in the index; what fails is raised as the run's fault. Borrows file, index and
/// fault; owns the view of the place that holds the memory. One thread at a time.
class TSpooledImage final : public IImage
{
public:
  /// Where a place is: the number of its first image in the run, its offset in the file, the size of one of its
  /// images and how many it has room for.
  struct TPlace
  {
    std::uint64_t firstImage;
    std::uint64_t offset;
    std::uint64_t imageSizeBytes;
    std::uint32_t images;
  };

  /// In staging memory.
  TSpooledImage(std::unique_ptr<TStagedImage> view, const TPlace& place, TSpoolFile* file, TSpoolIndex* index,
                TSpoolFault* fault);
  /// In mapped memory, which is in the operating system's hands from the start.
  TSpooledImage(std::unique_ptr<TOffsetMultiImage> view, const TPlace& place, TSpoolFile* file, TSpoolIndex* index,
                TSpoolFault* fault);
  ~TSpooledImage() override;

  int Lock(unsigned char*& destination) override;
  /// Returns 0, or an errno value: of what failed first in the run, the fault tells more.
  int Unlock() override;

  /// The next of its images has been filled. A place that is never told so has all of its images from Lock() on.
  /// The images of a place that takes long to fill are written and recorded once a second.
  void Take();

private:
  bool Written(int error);
  bool Record();

  TStagedImage* const staged_; // the view if it is one of staging memory, else null
  const std::unique_ptr<IImage> view_;
  const TPlace place_;
  TSpoolFile* const file_;
  TSpoolIndex* const index_;
  TSpoolFault* const fault_;
  unsigned char* memory_ = nullptr;
  std::int64_t lockedAtNs_ = 0;
  std::vector<std::int64_t> takenAtNs_; // of the images filled
  std::size_t recorded_ = 0;            // of these
  std::chrono::steady_clock::time_point recordedAt_;
};
