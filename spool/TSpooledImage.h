// SPDX-License-Identifier: MIT
// The place of one or more images of a run in a spool file.
#pragma once

#include "spool/IImage.h"
#include "spool/TSpoolIndex.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <vector>

class TSpoolFault;
class TSpoolFile;
class TStagingPool;

/// The place of one or more images of a run in a spool file. They are filled in a piece of staging memory, which lies
/// with regard to alignment as the place does in the file, so that it can be written unbuffered. When the place is
/// unlocked, its images are written and get their records in the index; what fails is raised as the run's fault.
/// Borrows everything it is made with. One thread at a time.
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

  /// Memory that a pool's pieces need for places of @p sizeBytes.
  static std::size_t PieceBytes(std::size_t sizeBytes);

  TSpooledImage(const TPlace& place, TSpoolFile* file, TStagingPool* pool, TSpoolIndex* index, TSpoolFault* fault);
  ~TSpooledImage() override;
  TSpooledImage(const TSpooledImage&) = delete;
  TSpooledImage& operator=(const TSpooledImage&) = delete;

  int Lock(unsigned char*& destination) override;
  /// Returns 0, or an errno value: of what failed first in the run, the fault tells more.
  int Unlock() override;

  /// The next of its images has been filled. Without a call all of its images count as filled from Lock() on.
  /// The images of a place that takes long to fill are written and recorded once a second.
  void Take();

private:
  bool WriteNewImages();
  std::size_t Record();

  const TPlace place_;
  TSpoolFile* const file_;
  TStagingPool* const pool_;
  TSpoolIndex* const index_;
  TSpoolFault* const fault_;
  unsigned char* piece_ = nullptr;
  unsigned char* memory_ = nullptr; // of the place, in the piece
  std::int64_t lockedAtNs_ = 0;
  std::vector<std::int64_t> takenAtNs_; // of the images filled
  std::size_t recorded_ = 0;            // of these
  std::chrono::steady_clock::time_point recordedAt_;
};
