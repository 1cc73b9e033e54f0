// SPDX-License-Identifier: MIT
// Makes, syncs and closes the files of a spooled run.
#include "spool/TSpoolFileSpooler.h"

#include "runs/run_format.h"
#include "spool/image_files.h"
#include "spool/TSpoolFault.h"
#include "spool/TSpoolIndex.h"
#include "utility/utf8.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <stdexcept>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>
#include <vector>

using QuorinUtility::TQuorinWorkThread;

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::seconds kSyncPeriod{1};
// Each keeps one or two descriptors; twice as many may be open.
constexpr std::size_t kMaxFullFiles = 64;

} // namespace

std::vector<std::unique_ptr<TSpoolFile>> TSpoolFileSpooler::WithRoom()
{
  std::vector<std::unique_ptr<TSpoolFile>> files;
  files.reserve(kMaxFullFiles);
  return files;
}

TSpoolFileSpooler::TSpoolFileSpooler(TSpoolFault* fault, TSpoolIndex* index)
    : fault_(fault),
      index_(index),
      full_(WithRoom()),
      closing_(WithRoom()),
      thread_(this, TQuorinWorkThread::eNormalPriority, "vxmcd-sync")
{
}

TSpoolFileSpooler::~TSpoolFileSpooler()
{
  Finish();
}

int TSpoolFileSpooler::SetImageSizeBytes(std::uint64_t sizeBytes)
{
  fileBytes_ = sizeBytes;
  return 0;
}

int TSpoolFileSpooler::SetPath(const wchar_t* path)
{
  directory_ = ToUtf8(path ? path : L"");
  return 0;
}

int TSpoolFileSpooler::SetStem(const wchar_t* stem)
{
  stem_ = ToUtf8(stem ? stem : L"");
  return 0;
}

int TSpoolFileSpooler::OpenImage(unsigned int index, int /*mode*/, IImage*& image)
{
  const TLock lock(mutex_);
  const auto open = files_.find(index);
  if (open != files_.end()) {
    image = open->second.get();
    return 0;
  }
  const std::uint64_t begin = fileBytes_ * index;
  const std::uint64_t used = runBytes_ > begin ? std::min(fileBytes_, runBytes_ - begin) : fileBytes_;
  const TSpoolFile::TSizes sizes{fileBytes_, used, imageBytes_ > 0 ? imageBytes_ : used};
  auto file = std::make_unique<TSpoolFile>(PathOf(index), index, sizes, &progress_);
  if (syncedImages_.size() <= index) syncedImages_.resize(std::size_t{index} + 1);
  const auto entry = files_.emplace(index, nullptr).first; // before the file is there: nothing can fail then
  if (const int error = file->Create(volume_)) {
    files_.erase(entry);
    fault_->Raise("cannot create", file->Path(), error);
    return error;
  }
  ++progress_;
  image = file.get();
  entry->second = std::move(file);
  return 0;
}

TSpoolFileSpooler::TOpenFiles::iterator TSpoolFileSpooler::Find(const IImage* image)
{
  return std::find_if(files_.begin(), files_.end(),
                      [image](const auto& entry) { return entry.second.get() == image; });
}

TSpoolFile& TSpoolFileSpooler::FileOf(const IImage* image)
{
  const TLock lock(mutex_);
  const auto open = Find(image);
  if (open == files_.end()) throw std::invalid_argument("a file that is not open");
  return *open->second;
}

int TSpoolFileSpooler::CloseImage(IImage* image)
{
  TLock lock(mutex_);
  const auto open = Find(image);
  if (open == files_.end()) return EINVAL;
  if (!open->second->IsFull()) return 0;
  const bool isLarge = open->second->IsLarge();
  changed_.Wait(mutex_, [&]() REQUIRES(mutex_) {
    return isLarge ? full_.empty() && !isClosing_ : full_.size() < kMaxFullFiles;
  });
  full_.push_back(std::move(open->second)); // the wait may have removed others, not this one
  files_.erase(open);
  closeNow_ = closeNow_ || isLarge || full_.size() >= kMaxFullFiles / 2;
  if (thread_.IsCreated()) {
    changed_.NotifyAll();
    return 0;
  }
  const std::unique_ptr<TSpoolFile> file = std::move(full_.back());
  full_.pop_back();
  lock.Unlock();
  Close(*file);
  return 0;
}

// Allocates nothing: an exception would end the thread, and the next CloseImage() would wait without limit.
void TSpoolFileSpooler::Run()
{
  auto nextSync = Clock::now() + kSyncPeriod;
  TLock lock(mutex_);
  while (!full_.empty() || !finishing_) {
    changed_.WaitFor(mutex_, nextSync - Clock::now(),
                     [this]() REQUIRES(mutex_) { return closeNow_ || finishing_; });
    const bool isTime = Clock::now() >= nextSync;
    closing_.swap(full_);
    closeNow_ = false;
    isClosing_ = !closing_.empty();
    lock.Unlock();
    changed_.NotifyAll();
    if (CloseFiles() || isTime) {
      if (isTime) SyncOpenFiles();
      SyncIndex();
      nextSync = Clock::now() + kSyncPeriod;
    }
    lock.Relock();
    isClosing_ = false;
    changed_.NotifyAll();
  }
}

bool TSpoolFileSpooler::CloseFiles()
{
  bool isLarge = false;
  for (const auto& file : closing_) {
    Close(*file);
    isLarge = isLarge || file->IsLarge();
  }
  closing_.clear();
  return isLarge;
}

// No file is destroyed during its sync: files are closed on this thread, or after it has ended.
void TSpoolFileSpooler::SyncOpenFiles()
{
  for (unsigned int next = 0;;) {
    TSpoolFile* file = nullptr;
    {
      const TLock lock(mutex_);
      const auto entry = files_.lower_bound(next);
      if (entry == files_.end()) return;
      file = entry->second.get();
    }
    if (const int error = file->Sync()) fault_->Raise("cannot write", file->Path(), error);
    CountImages(*file);
    next = file->Number() + 1;
  }
}

// What counts as being on the disk has its record in the index before.
void TSpoolFileSpooler::SyncIndex()
{
  std::uint64_t images = 0;
  {
    const TLock lock(mutex_);
    images = imagesInSyncedFiles_;
  }
  if (!index_->Sync()) return;
  const TLock lock(mutex_);
  imagesOnDisk_ = images;
}

void TSpoolFileSpooler::Close(TSpoolFile& file)
{
  file.IsAsMade(fault_);
  if (const int error = file.Close()) fault_->Raise("cannot write", file.Path(), error);
  CountImages(file);
}

void TSpoolFileSpooler::CountImages(const TSpoolFile& file)
{
  const TLock lock(mutex_);
  const std::uint32_t images = file.SyncedImages();
  imagesInSyncedFiles_ += images - std::exchange(syncedImages_[file.Number()], images);
}

void TSpoolFileSpooler::Finish()
{
  {
    const TLock lock(mutex_);
    if (finishing_) return;
    finishing_ = true;
  }
  changed_.NotifyAll();
  thread_.WaitForCompletion();
  TOpenFiles open;
  {
    const TLock lock(mutex_);
    open.swap(files_);
  }
  for (const auto& [number, file] : open) Close(*file);
  SyncIndex();
  CheckFiles();
}

// Files may have been removed since they were closed.
void TSpoolFileSpooler::CheckFiles()
{
  const TLock lock(mutex_);
  for (unsigned int number = 0; number < syncedImages_.size(); ++number) {
    if (syncedImages_[number] == 0) continue;
    const std::string path = PathOf(number);
    struct stat status = {};
    const int error = lstat(path.c_str(), &status) == 0 ? 0 : errno;
    if (error == 0 && S_ISREG(status.st_mode) && static_cast<std::uint64_t>(status.st_size) == fileBytes_)
      continue;
    fault_->Raise("somebody has removed or truncated", path, error);
    imagesOnDisk_ -= std::min<std::uint64_t>(imagesOnDisk_, syncedImages_[number]);
  }
}

std::uint64_t TSpoolFileSpooler::ImagesOnDisk()
{
  const TLock lock(mutex_);
  return imagesOnDisk_;
}

int TSpoolFileSpooler::Remove()
{
  std::vector<std::string> own;
  if (const int error = FindImageFiles(directory_, stem_, own)) fault_->Raise("cannot read", directory_, error);
  for (const std::string& path : own)
    if (unlink(path.c_str()) != 0 && errno != ENOENT) fault_->Raise("cannot remove", path, errno);
  return fault_->IsRaised() ? EIO : 0;
}

std::string TSpoolFileSpooler::PathOf(unsigned int number) const
{
  return directory_ + "/" + RunFormat::ImageFileName(number, stem_);
}
