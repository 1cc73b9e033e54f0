// SPDX-License-Identifier: MIT
// The file that says which images are on disk.
#include "spool/TSpoolIndex.h"

#include "runs/checksum.h"
#include "spool/TSpoolFault.h"
#include "utility/file_access.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>
#include <vector>

bool TSpoolIndex::Create(const std::string& directory, std::uint64_t reservedBytes)
{
  const TLock lock(mutex_);
  path_ = directory + "/" + RunFormat::kIndexName;
  count_ = 0;
  // Records go to the end wherever that is: when somebody truncates the file just before a write, its size tells so.
  file_ = TFileDescriptor(open(path_.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
  if (!file_.IsOpen()) {
    fault_->Raise("cannot create", path_, errno);
    return false;
  }
  // Some file systems apply the limit for the size of files here too, though the length stays.
  if (const std::uint64_t bytes = std::min(reservedBytes, FileSizeLimit()); bytes > 0)
    fallocate(file_.Get(), FALLOC_FL_KEEP_SIZE, 0, static_cast<off_t>(bytes));
  return true;
}

std::size_t TSpoolIndex::Append(std::span<const TRecord> images)
{
  std::vector<TRecord> records(images.begin(), images.end());
  for (TRecord& record : records) record.recordChecksum = Checksum(&record, RunFormat::kCheckedRecordBytes);
  const std::size_t size = records.size() * sizeof(TRecord);

  const TLock lock(mutex_);
  const std::uint64_t offset = count_ * sizeof(TRecord);
  if (!CheckUnchanged()) return 0;
  int error = CheckFileSizeLimit(offset + size);
  if (error == 0) error = WriteAll(file_.Get(), records.data(), size, offset);
  const std::size_t written = error == 0 ? images.size() : WholeRecordsBehind(offset);
  if (error != 0) {
    const std::uint64_t end = offset + written * sizeof(TRecord);
    if (ftruncate(file_.Get(), static_cast<off_t>(end)) != 0) fault_->Raise("cannot shorten", path_, errno);
    fault_->Raise("cannot write", path_, error);
  }
  count_ += written;
  isSynced_ = isSynced_ && written == 0;
  return written;
}

// What was written before the disk was full.
std::size_t TSpoolIndex::WholeRecordsBehind(std::uint64_t offset) const
{
  struct stat status = {};
  if (fstat(file_.Get(), &status) != 0) return 0;
  const auto end = static_cast<std::uint64_t>(status.st_size);
  return end > offset ? (end - offset) / sizeof(TRecord) : 0;
}

std::uint64_t TSpoolIndex::Count()
{
  const TLock lock(mutex_);
  return count_;
}

// To append to a truncated file would leave a gap.
bool TSpoolIndex::CheckUnchanged()
{
  return fault_->CheckFile(file_.Get(), count_ * sizeof(TRecord), path_);
}

bool TSpoolIndex::Sync()
{
  int file = -1;
  {
    const TLock lock(mutex_);
    if (!file_.IsOpen() || syncFailed_ || !CheckUnchanged()) return false;
    if (std::exchange(isSynced_, true)) return true;
    file = file_.Get();
  }
  if (fdatasync(file) == 0) return true;
  fault_->Raise("cannot write", path_, errno);
  syncFailed_ = true; // the system reports an error once only
  return false;
}

bool TSpoolIndex::Close()
{
  {
    const TLock lock(mutex_);
    if (!file_.IsOpen()) return true;
  }
  const bool synced = Sync();
  const TLock lock(mutex_);
  // The length stays; what was removed or truncated is not made longer.
  if (synced && ftruncate(file_.Get(), static_cast<off_t>(count_ * sizeof(TRecord))) != 0)
    fault_->Raise("cannot shorten", path_, errno);
  if (file_.Close() == 0) return synced;
  fault_->Raise("cannot write", path_, errno);
  return false;
}
