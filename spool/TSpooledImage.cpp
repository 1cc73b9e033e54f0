// SPDX-License-Identifier: MIT
// The place of one or more images of a run in a spool file.
#include "spool/TSpooledImage.h"

#include "runs/checksum.h"
#include "runs/host_time.h"
#include "spool/TSpoolFault.h"
#include "spool/TSpoolFile.h"
#include "spool/TStagingPool.h"

#include <cerrno>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock; // nobody sets it back

constexpr std::chrono::seconds kRecordingPeriod{1};

} // namespace

std::size_t TSpooledImage::PieceBytes(std::size_t sizeBytes)
{
  return sizeBytes + TSpoolVolume::kAlignment;
}

TSpooledImage::TSpooledImage(const TPlace& place, TSpoolFile* file, TStagingPool* pool, TSpoolIndex* index,
                             TSpoolFault* fault)
    : place_(place), file_(file), pool_(pool), index_(index), fault_(fault)
{
}

TSpooledImage::~TSpooledImage()
{
  if (piece_) pool_->Release(piece_);
}

int TSpooledImage::Lock(unsigned char*& destination)
{
  if (!piece_) piece_ = pool_->Acquire();
  if (!piece_) {
    fault_->Raise("no memory for an image of", file_->Path(), ENOMEM);
    return ENOMEM;
  }
  lockedAtNs_ = HostTimeNs();
  recordedAt_ = Clock::now();
  takenAtNs_.reserve(place_.images);
  memory_ =
      piece_ + place_.offset % TSpoolVolume::kAlignment; // last: a place that is not locked has nothing to write
  destination = memory_;
  return 0;
}

void TSpooledImage::Take()
{
  takenAtNs_.push_back(HostTimeNs());
  if (Clock::now() - recordedAt_ >= kRecordingPeriod) WriteNewImages();
}

// What lies behind the images of a block that is not full was never filled, and may be of other images.
int TSpooledImage::Unlock()
{
  if (!memory_) return 0;
  if (takenAtNs_.empty()) takenAtNs_.assign(place_.images, lockedAtNs_);
  return WriteNewImages() ? 0 : EIO;
}

bool TSpooledImage::WriteNewImages()
{
  const std::uint64_t begin = place_.imageSizeBytes * recorded_;
  const std::uint64_t size = place_.imageSizeBytes * (takenAtNs_.size() - recorded_);
  if (size == 0) return true;
  if (!file_->IsAsMade(fault_)) return false;
  if (const int error = file_->Write(memory_ + begin, size, place_.offset + begin)) {
    fault_->Raise("cannot write", file_->Path(), error);
    return false;
  }
  const std::size_t images = takenAtNs_.size() - recorded_;
  const std::size_t recorded = Record();
  if (recorded > 0)
    file_->ImagesWritten(static_cast<std::uint32_t>(recorded), place_.offset + begin,
                         recorded * place_.imageSizeBytes);
  return recorded == images;
}

std::size_t TSpooledImage::Record()
{
  std::vector<RunFormat::TIndexRecord> images;
  images.reserve(takenAtNs_.size() - recorded_);
  for (std::size_t i = recorded_; i < takenAtNs_.size(); ++i) {
    const unsigned char* const image = memory_ + i * place_.imageSizeBytes;
    images.push_back({place_.firstImage + i, Checksum(image, place_.imageSizeBytes), takenAtNs_[i]});
  }
  recorded_ = takenAtNs_.size();
  recordedAt_ = Clock::now();
  return index_->Append(images);
}
