// SPDX-License-Identifier: MIT
// Opens the places of a run's images in its files.
#include "spool/TSpoolImageSpooler.h"

#include "runs/checksum.h"
#include "runs/host_time.h"
#include "spool/TSpoolFault.h"
#include "spool/TSpoolFile.h"
#include "spool/TSpoolFileSpooler.h"
#include "spool/TSpoolIndex.h"
#include "utility/file_access.h"
#include "utility/TMutex.h"

#include <cerrno>
#include <chrono>
#include <cstddef>
#include <sys/mman.h>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock; // is never set back

constexpr std::chrono::seconds kRecordingPeriod{1};
constexpr std::size_t kAlignment = TSpoolVolume::kAlignment;
constexpr std::size_t kHugePage = std::size_t{2} << 20;
constexpr std::size_t kLargePiece = 2 * kHugePage; // gets huge pages where the system has some free

std::size_t RoundUp(std::size_t size, std::size_t step)
{
  return (size + step - 1) / step * step;
}

} // namespace

/// Page-aligned pieces of memory, all of one size, used again and again so that their pages are in place. Outlives all
/// pieces in use. Thread-safe.
class TSpoolImageSpooler::TStagingPool final
{
public:
  /// Each piece has room for a place of @p placeBytes at any offset from a page.
  explicit TStagingPool(std::size_t placeBytes) : sizeBytes_(PieceBytes(placeBytes + kAlignment)) {}
  ~TStagingPool()
  {
    for (unsigned char* const piece : spare_) munmap(piece, sizeBytes_);
  }
  TStagingPool(const TStagingPool&) = delete;
  TStagingPool& operator=(const TStagingPool&) = delete;

  /// A piece to use until Release(), or null when there is no memory. Its content is what was in it before.
  unsigned char* Acquire() EXCLUDES(mutex_)
  {
    {
      const TLock lock(mutex_);
      if (!spare_.empty()) {
        unsigned char* const piece = spare_.back();
        spare_.pop_back();
        return piece;
      }
      spare_.reserve(++pieces_);
    }
    void* const piece = mmap(nullptr, sizeBytes_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (piece == MAP_FAILED) return nullptr;
    if (sizeBytes_ >= kLargePiece) madvise(piece, sizeBytes_, MADV_HUGEPAGE);
    return static_cast<unsigned char*>(piece);
  }

  void Release(unsigned char* piece) EXCLUDES(mutex_)
  {
    const TLock lock(mutex_);
    spare_.push_back(piece);
  }

private:
  static std::size_t PieceBytes(std::size_t sizeBytes)
  {
    return sizeBytes >= kLargePiece ? RoundUp(sizeBytes, kHugePage) : sizeBytes;
  }

  const std::size_t sizeBytes_;
  TMutex mutex_;
  std::size_t pieces_ GUARDED_BY(mutex_) = 0;
  std::vector<unsigned char*> spare_ GUARDED_BY(mutex_); // with room for all pieces
};

/// The place of one or more images of a run in a spool file. They are filled in a piece of staging memory, which is
/// aligned as the place is in the file, so that it can be written unbuffered. Borrows what it is made with.
class TSpoolImageSpooler::TPlace final : public IImage
{
public:
  TPlace(const TSpoolImageSpooler& spooler, TSpoolFile& file, unsigned int position)
      : file_(file),
        pool_(*spooler.staging_),
        index_(*spooler.index_),
        fault_(*spooler.fault_),
        imageBytes_(spooler.layout_.imageSizeBytes),
        images_(spooler.layout_.imagesPerPlace),
        offset_(position * spooler.layout_.PlaceBytes()),
        firstImage_(std::uint64_t{file.Number()} * spooler.layout_.ImagesPerFile() +
                    std::uint64_t{position} * images_)
  {
  }
  ~TPlace() override
  {
    if (piece_) pool_.Release(piece_);
  }
  TPlace(const TPlace&) = delete;
  TPlace& operator=(const TPlace&) = delete;

  int Lock(unsigned char*& destination) override;
  /// Returns 0, or an errno value. The run's fault has the details of its first failure.
  int Unlock() override;

private:
  bool WriteNewImages();
  std::size_t Write(std::size_t images);
  std::size_t Record(std::size_t images);

  TSpoolFile& file_;
  TStagingPool& pool_;
  TSpoolIndex& index_;
  TSpoolFault& fault_;
  const std::uint64_t imageBytes_;
  const std::uint32_t images_; // that it has room for
  const std::uint64_t offset_; // in the file
  const std::uint64_t firstImage_;
  unsigned char* piece_ = nullptr;
  unsigned char* memory_ = nullptr;     // of the place, in the piece
  std::vector<std::int64_t> takenAtNs_; // of the images locked so far
  std::size_t filled_ = 0;              // of these
  std::size_t recorded_ = 0;            // of these
  Clock::time_point recordedAt_;
};

int TSpoolImageSpooler::TPlace::Lock(unsigned char*& destination)
{
  if (filled_ == images_) return EINVAL;
  const std::uint64_t begin = filled_ * imageBytes_;
  if (const int error = file_.Reserve(offset_ + begin, imageBytes_)) {
    fault_.Raise("cannot write", file_.Path(), error);
    return error;
  }
  if (!piece_) {
    piece_ = pool_.Acquire();
    if (!piece_) {
      fault_.Raise("no memory for an image of", file_.Path(), ENOMEM);
      return ENOMEM;
    }
    takenAtNs_.reserve(images_);
    memory_ = piece_ + offset_ % kAlignment;
    recordedAt_ = Clock::now();
  }
  takenAtNs_.resize(filled_);
  takenAtNs_.push_back(HostTimeNs());
  destination = memory_ + begin;
  return 0;
}

// Of a place that is not full only the images are written: the memory after them may have parts of other images.
int TSpoolImageSpooler::TPlace::Unlock()
{
  const bool isOneMore = takenAtNs_.size() > filled_;
  filled_ = takenAtNs_.size();
  if (isOneMore && filled_ < images_ && Clock::now() - recordedAt_ < kRecordingPeriod) return 0;
  return WriteNewImages() ? 0 : EIO;
}

bool TSpoolImageSpooler::TPlace::WriteNewImages()
{
  const std::size_t images = filled_ - recorded_;
  if (images == 0) return true;
  if (!file_.IsAsMade(&fault_)) return false;
  const std::uint64_t begin = offset_ + imageBytes_ * recorded_;
  const std::size_t recorded = Record(Write(images));
  if (recorded > 0) file_.ImagesWritten(static_cast<std::uint32_t>(recorded), begin, recorded * imageBytes_);
  return recorded == images;
}

// Returns how many are written. Where nothing was reserved, a disk may have room for some of them only.
std::size_t TSpoolImageSpooler::TPlace::Write(std::size_t images)
{
  const auto writeImages = [this](std::size_t first, std::size_t count) {
    const std::uint64_t begin = imageBytes_ * first;
    return file_.Write(memory_ + begin, imageBytes_ * count, offset_ + begin);
  };
  int error = writeImages(recorded_, images);
  if (error == 0) return images;
  std::size_t written = 0;
  if (IsDiskFull(error))
    while (written < images && (error = writeImages(recorded_ + written, 1)) == 0) ++written;
  if (error != 0) fault_.Raise("cannot write", file_.Path(), error);
  return written;
}

std::size_t TSpoolImageSpooler::TPlace::Record(std::size_t images)
{
  std::vector<RunFormat::TIndexRecord> records;
  records.reserve(images);
  for (std::size_t i = recorded_; i < recorded_ + images; ++i)
    records.push_back({firstImage_ + i, Checksum(memory_ + i * imageBytes_, imageBytes_), takenAtNs_[i]});
  recorded_ = filled_;
  recordedAt_ = Clock::now();
  return index_.Append(records);
}

TSpoolImageSpooler::TSpoolImageSpooler(TSpoolFileSpooler* files, const TSpoolLayout& layout, TSpoolIndex* index,
                                       TSpoolFault* fault)
    : TRandomAccessMultiImageSpooler(files, layout.placesPerFile),
      files_(files),
      layout_(layout),
      index_(index),
      fault_(fault),
      staging_(std::make_unique<TStagingPool>(layout.PlaceBytes()))
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

IImage* TSpoolImageSpooler::CreateOffsetMultiImage(IImage* file, std::uint64_t /*imageSizeBytes*/,
                                                   unsigned int position)
{
  return std::make_unique<TPlace>(*this, files_->FileOf(file), position).release();
}
