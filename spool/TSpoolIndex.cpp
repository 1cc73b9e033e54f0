// SPDX-License-Identifier: MIT
// The file that says which images are on disk.
#include "spool/TSpoolIndex.h"

#include "spool/checksum.h"
#include "spool/file_writing.h"
#include "spool/TSpoolFault.h"

#include <cerrno>
#include <cstddef>
#include <fcntl.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace {

/// A record as it stands in the file, little-endian.
struct TRecord
{
  std::uint64_t number;
  std::uint64_t checksum;
  std::int64_t takenAtNs;
  std::uint64_t recordChecksum; // of what stands before it
};
static_assert(sizeof(TRecord) == 32 && offsetof(TRecord, recordChecksum) == 24);
static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__);

} // namespace

bool TSpoolIndex::Create(const std::string& directory)
{
  const std::lock_guard lock(mutex_);
  path_ = directory + "/" + kFileName;
  count_ = 0;
  file_ = TFileDescriptor(open(path_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
  if (!file_.IsOpen()) fault_->Raise("cannot create", path_, errno);
  return file_.IsOpen();
}

bool TSpoolIndex::Append(std::span<const TImage> images)
{
  std::vector<TRecord> records;
  records.reserve(images.size());
  for (const TImage& image : images) {
    TRecord record{image.number, image.checksum, image.takenAtNs, 0};
    record.recordChecksum = Checksum(&record, offsetof(TRecord, recordChecksum));
    records.push_back(record);
  }
  const std::size_t size = records.size() * sizeof(TRecord);

  const std::lock_guard lock(mutex_);
  const std::uint64_t offset = count_ * sizeof(TRecord);
  if (!CheckUnchanged()) return false;
  int error = CheckFileSizeLimit(offset + size);
  if (error == 0) error = WriteAll(file_.Get(), records.data(), size, offset);
  if (error != 0) {
    // A part of the records may have fitted in; the count is to be what the file says.
    if (ftruncate(file_.Get(), static_cast<off_t>(offset)) != 0) fault_->Raise("cannot shorten", path_, errno);
    fault_->Raise("cannot write", path_, error);
    return false;
  }
  count_ += images.size();
  isSynced_ = false;
  return true;
}

std::uint64_t TSpoolIndex::Count()
{
  const std::lock_guard lock(mutex_);
  return count_;
}

// What is appended behind the end that somebody has cut off would leave a gap.
bool TSpoolIndex::CheckUnchanged()
{
  return fault_->CheckFile(file_.Get(), count_ * sizeof(TRecord), path_);
}

bool TSpoolIndex::Sync()
{
  {
    const std::lock_guard lock(mutex_);
    if (!file_.IsOpen() || syncFailed_ || !CheckUnchanged()) return false;
    if (std::exchange(isSynced_, true)) return true;
  }
  if (fdatasync(file_.Get()) == 0) return true;
  fault_->Raise("cannot write", path_, errno);
  syncFailed_ = true; // the system reports an error once only
  return false;
}

bool TSpoolIndex::Close()
{
  if (!file_.IsOpen()) return true;
  const bool synced = Sync();
  const std::lock_guard lock(mutex_);
  if (file_.Close() == 0) return synced;
  fault_->Raise("cannot write", path_, errno);
  return false;
}
