// SPDX-License-Identifier: MIT
// The place of one or more images of a run, with the account of what became of them.
#include "spool/TSpooledImage.h"

#include "spool/checksum.h"
#include "spool/host_time.h"
#include "spool/TOffsetMultiImage.h"
#include "spool/TSpoolFault.h"
#include "spool/TSpoolFile.h"
#include "spool/TStagedImage.h"

#include <cerrno>
#include <cstring>
#include <utility>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock; // nobody sets it back

constexpr std::chrono::seconds kRecordingPace{1};

} // namespace

TSpooledImage::TSpooledImage(std::unique_ptr<TStagedImage> view, const TPlace& place, TSpoolFile* file,
                             TSpoolIndex* index, TSpoolFault* fault)
    : staged_(view.get()), view_(std::move(view)), place_(place), file_(file), index_(index), fault_(fault)
{
}

TSpooledImage::TSpooledImage(std::unique_ptr<TOffsetMultiImage> view, const TPlace& place, TSpoolFile* file,
                             TSpoolIndex* index, TSpoolFault* fault)
    : staged_(nullptr), view_(std::move(view)), place_(place), file_(file), index_(index), fault_(fault)
{
}

TSpooledImage::~TSpooledImage() = default;

int TSpooledImage::Lock(unsigned char*& destination)
{
  const int error = view_->Lock(destination);
  if (error != 0) {
    fault_->Raise("no memory for an image of", file_->Path(), error);
    return error;
  }
  lockedAtNs_ = HostTimeNs();
  recordedAt_ = Clock::now();
  takenAtNs_.reserve(place_.images);
  memory_ = destination; // last: a place that could not be locked has nothing to write
  return 0;
}

void TSpooledImage::Take()
{
  takenAtNs_.push_back(HostTimeNs());
  if (Clock::now() - recordedAt_ < kRecordingPace) return;
  const std::uint64_t begin = place_.imageSizeBytes * recorded_;
  const std::uint64_t end = place_.imageSizeBytes * takenAtNs_.size();
  if (!staged_ || Written(staged_->WritePart(begin, end))) Record();
}

int TSpooledImage::Unlock()
{
  if (!memory_) return 0;
  if (takenAtNs_.empty()) takenAtNs_.assign(place_.images, lockedAtNs_);
  const std::uint64_t size = place_.imageSizeBytes * place_.images;
  const std::uint64_t filled = place_.imageSizeBytes * takenAtNs_.size();
  // Memory that is used again still has earlier images in it.
  std::memset(memory_ + filled, 0, size - filled);
  if (!Written(view_->Unlock()) || !Record()) return EIO;
  file_->PartDone(place_.offset, size);
  return 0;
}

bool TSpooledImage::Written(int error)
{
  if (error != 0) fault_->Raise("cannot write", file_->Path(), error);
  return error == 0;
}

bool TSpooledImage::Record()
{
  std::vector<TSpoolIndex::TImage> images;
  images.reserve(takenAtNs_.size() - recorded_);
  for (std::size_t i = recorded_; i < takenAtNs_.size(); ++i) {
    const unsigned char* const image = memory_ + i * place_.imageSizeBytes;
    images.push_back({place_.firstImage + i, Checksum(image, place_.imageSizeBytes), takenAtNs_[i]});
  }
  recorded_ = takenAtNs_.size();
  recordedAt_ = Clock::now();
  return index_->Append(images);
}
