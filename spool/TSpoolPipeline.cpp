// SPDX-License-Identifier: MIT
// Writes the frames of one run to the disk.
#include "spool/TSpoolPipeline.h"

#include "runs/host_time.h"
#include "runs/run_format.h"
#include "spool/TDirectoryTree.h"
#include "spool/TQueuedSpooler.h"
#include "spool/TSpoolImageSpooler.h"
#include "spool/TSpoolSpace.h"
#include "spool/TThreadedSpooler.h"
#include "utility/file_access.h"
#include "utility/TQuorinFilePath.h"
#include "utility/TQuorinLibDebugOutput.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <exception>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>
#include <utility>

using QuorinUtility::TQuorinFilePath;
using QuorinUtility::TQuorinLibDebugOutput;

namespace {

constexpr std::uint64_t kStagingBytes = std::uint64_t{512} << 20;

struct TFree
{
  void operator()(char* text) const { std::free(text); }
};

} // namespace

TSpoolPipeline::TSpoolPipeline(const TSpoolSettings& settings, std::uint64_t imageSizeBytes,
                               std::uint32_t seriesLength)
    : settings_(settings),
      imageSizeBytes_(imageSizeBytes),
      seriesLength_(seriesLength),
      index_(&fault_),
      fileSpooler_(&fault_, &index_)
{
  if (!PrepareDirectory(settings.path)) return;
  layout_ = TSpoolLayout::Choose(settings_.method, imageSizeBytes_, seriesLength_);
  WarnOfFullDisk();
  description_.Gather(settings.coreHandle, settings.method, seriesLength);
}

void TSpoolPipeline::WarnOfFullDisk() const
{
  if (!TQuorinLibDebugOutput::IsEnabled(TQuorinLibDebugOutput::Warning)) return;
  const std::optional<TSpoolSpace> space = TSpoolSpace::Measure(directory_, layout_, seriesLength_);
  if (!space || space->IsEnough()) return;
  TQuorinLibDebugOutput::Output(__FILE__, __LINE__, __func__, TQuorinLibDebugOutput::Warning,
                                "a run of %u images needs %llu bytes, and %llu bytes are free in %s",
                                seriesLength_, static_cast<unsigned long long>(space->neededBytes),
                                static_cast<unsigned long long>(space->freeBytes), directory_.c_str());
}

void TSpoolPipeline::Begin()
{
  if (!std::exchange(begun_, true) && !fault_.IsRaised()) Try([this] { ReplaceEarlierRun(); });
}

void TSpoolPipeline::ReplaceEarlierRun()
{
  fileSpooler_.SetDirectory(directory_);
  const std::string stem = RunFormat::kImageFileStem;
  fileSpooler_.SetStem(std::wstring(stem.begin(), stem.end()).c_str());
  RemoveEarlierRun();
  if (fault_.IsRaised()) return;

  // Not before: the earlier run may have filled the disk.
  const TSpoolVolume volume = TSpoolVolume::Probe(directory_);
  fileSpooler_.SetVolume(volume);
  fileSpooler_.SetRun(imageSizeBytes_, seriesLength_);
  described_ = description_.Begin(directory_, layout_);
  if (!described_) {
    fault_.Raise("cannot describe the run in", directory_, errno);
    return;
  }
  const std::optional<TSpoolSpace> space = TSpoolSpace::Measure(directory_, layout_, seriesLength_);
  if (!index_.Create(directory_, space ? space->indexBytes : 0)) return;
  ReserveRoom();
  MakeAlgorithm();
}

TSpoolPipeline::~TSpoolPipeline()
{
  Abort();
  Finish();
}

// The full path is kept, since the working directory may change. A backslash in the path of the description counts as
// a slash, so the description would be in another directory. Two runs in one directory would remove each other's files,
// so a run locks it.
bool TSpoolPipeline::PrepareDirectory(const std::string& path)
{
  TQuorinFilePath root(path.c_str());
  TDirectoryTree tree(&root);
  if (path.empty() || !tree.CreateDirectoryTree()) {
    fault_.Raise("cannot make the directory", path, path.empty() ? ENOENT : tree.Error());
    return false;
  }
  const std::unique_ptr<char, TFree> full(realpath(root.GetForwardSlashPath(), nullptr));
  if (full) directory_ = full.get();
  if (directory_.find('\\') != std::string::npos) {
    fault_.Raise("no run can be described where a name has a backslash:", directory_, EINVAL);
    return false;
  }
  directoryLock_ = TFileDescriptor(open(directory_.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!directoryLock_.IsOpen()) {
    fault_.Raise("cannot open the directory", path, errno);
    return false;
  }
  // Where the file system has no locks, the run goes on without.
  if (flock(directoryLock_.Get(), LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK) {
    fault_.Raise("another run is writing into", directory_, EBUSY);
    return false;
  }
  return true;
}

// The description is removed first and the new one written last, so that it is never beside another run's files.
// After a file that cannot be removed, nothing else is.
void TSpoolPipeline::RemoveEarlierRun()
{
  const auto remove = [this](const char* name) {
    if (fault_.IsRaised()) return;
    const std::string file = directory_ + "/" + name;
    if (unlink(file.c_str()) != 0 && errno != ENOENT) fault_.Raise("cannot remove", file, errno);
  };
  remove(TAcquisitionMetadata::mpsz_iniFilename);
  if (!fault_.IsRaised()) fileSpooler_.Remove();
  remove(RunFormat::kIndexName);
}

// A file without a name vanishes with the process, however that ends. Where there can be none and the disk is full at
// the end, the description stays as it was at the start.
void TSpoolPipeline::ReserveRoom()
{
  room_ = TFileDescriptor(open(directory_.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0666));
  if (!room_.IsOpen() || CheckFileSizeLimit(TSpoolDescription::kMaxBytes) != 0) return;
  if (fallocate(room_.Get(), 0, 0, TSpoolDescription::kMaxBytes) != 0 && IsDiskFull(errno))
    fault_.Raise("no room for a run in", directory_, errno);
}

// Every thread may have an image in staging memory, and one more is being filled.
int TSpoolPipeline::BoundedThreadCount(int threadCount) const
{
  const std::uint64_t most = std::max<std::uint64_t>(kStagingBytes / layout_.PlaceBytes(), 2) - 1;
  return static_cast<int>(std::min(std::int64_t{threadCount}, static_cast<std::int64_t>(most)));
}

void TSpoolPipeline::MakeAlgorithm()
{
  const int threads = BoundedThreadCount(settings_.threadCount);
  imageSpooler_ = std::make_unique<TSpoolImageSpooler>(&fileSpooler_, layout_, &index_, &fault_);
  if (layout_.isQueued)
    algorithm_ = std::make_unique<TQueuedSpooler>(imageSpooler_.get(), &fault_, threads, settings_.slots,
                                                  settings_.coreHandle);
  else
    algorithm_ =
        std::make_unique<TThreadedSpooler>(imageSpooler_.get(), threads, static_cast<int>(layout_.imagesPerPlace));
  startedAlgorithm_ = algorithm_.get();
}

bool TSpoolPipeline::Spool(int index, unsigned char* buffer)
{
  if (finished_) return false;
  Begin();
  if (fault_.IsRaised() || !algorithm_) return false;
  if (!firstFrameTimeNs_) firstFrameTimeNs_ = HostTimeNs();
  const bool accepted = algorithm_->Spool(index, buffer, static_cast<int>(layout_.imageSizeBytes)) == 1;
  if (accepted)
    ++accepted_;
  else if (!fault_.IsRaised())
    fault_.Raise("cannot write image", std::to_string(index + 1), 0);
  return !fault_.IsRaised();
}

bool TSpoolPipeline::RequeuesSlots() const
{
  const ISpoolAlgorithm* const algorithm = startedAlgorithm_;
  return algorithm && algorithm->RequeuesSlots();
}

// Frames that were copied out of their slots are written nevertheless.
void TSpoolPipeline::Abort()
{
  if (!RequeuesSlots()) return;
  aborted_ = true;
  startedAlgorithm_.load()->Abort();
}

// The files are synced already, but perhaps not their names, which some file systems cannot sync.
void TSpoolPipeline::SyncDirectory()
{
  if (fsync(directoryLock_.Get()) != 0 && !IsUnsupported(errno)) fault_.Raise("cannot write", directory_, errno);
}

// A process that was forked meanwhile has the descriptor too, so that closing it here would not open the lock.
void TSpoolPipeline::UnlockDirectory()
{
  if (directoryLock_.IsOpen()) flock(directoryLock_.Get(), LOCK_UN);
  directoryLock_.Close();
}

// Every step at the end of a run is taken, also after one that failed.
template <class Step>
void TSpoolPipeline::Try(Step step)
{
  try {
    step();
  } catch (const std::exception& exception) {
    TQuorinLibDebugOutput::Output(__FILE__, __LINE__, __func__, "the end of a run: %s", exception.what());
    fault_.Raise("cannot finish the run in", directory_, ENOMEM);
  }
}

void TSpoolPipeline::Finish()
{
  if (finished_) return;
  finished_ = true;
  Try([this] {
    if (algorithm_) algorithm_->Finish();
  });
  imageSpooler_.reset(); // with its memory, which may be large
  Try([this] { fileSpooler_.Finish(); });
  index_.Close();
  if (described_) {
    Try([this] { SyncDirectory(); });
    Try([this] { CompleteDescription(); });
  }
  UnlockDirectory();
}

void TSpoolPipeline::CompleteDescription()
{
  if (!aborted_ && !fault_.IsRaised() && index_.Count() != accepted_)
    fault_.Raise("images are missing in", directory_, 0);

  TSpoolDescription::TOutcome outcome;
  outcome.imagesWritten = fileSpooler_.ImagesOnDisk();
  outcome.completed = !fault_.IsRaised() && outcome.imagesWritten == seriesLength_;
  outcome.failure = fault_.Text();
  outcome.firstFrameTimeNs = firstFrameTimeNs_;
  outcome.firstFrameTick = firstFrameTick_;
  bool isDescribed = description_.End(outcome, room_.Get());
  room_.Close();
  if (!isDescribed && outcome.imagesWritten == 0) { // no room beside that of the start, which no image needs
    unlink((directory_ + "/" + TAcquisitionMetadata::mpsz_iniFilename).c_str());
    isDescribed = description_.End(outcome, -1);
  }
  if (!isDescribed) fault_.Raise("cannot describe the run in", directory_, errno);
}
