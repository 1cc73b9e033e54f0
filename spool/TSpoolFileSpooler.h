// SPDX-License-Identifier: MIT
// Makes, syncs and closes the files of a spooled run.
#pragma once

#include "spool/ISpooler.h"
#include "spool/TSpoolFile.h"
#include "utility/TMutex.h"
#include "utility/TQuorinWorkThread.h"
#include "utility/TQuorinWorkThreadRoutine.h"

#include <atomic>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

class TSpoolFault;
class TSpoolIndex;

/// The spooler whose images are whole files: "<path>/<stem>_<ten digits>.dat". A file stays open after CloseImage()
/// until it is full, or until Finish(), since the next image of it may come at any time. Full files are synced and
/// closed on its own thread, large ones one after another, small ones many at a time: while that waits for the disk,
/// the next file can be opened and filled. About once a second that thread also syncs the files that are open; after
/// these, and after each large file, it syncs the index. A power failure loses the images of the last second or two.
/// Owned by the run's pipeline; borrows fault and index. Thread-safe. Operations return errno values; what fails is
/// also raised as the fault.
class TSpoolFileSpooler final : public ISpooler, private QuorinUtility::TQuorinWorkThreadRoutine
{
public:
  TSpoolFileSpooler(TSpoolFault* fault, TSpoolIndex* index);
  ~TSpoolFileSpooler() override;

  /// @p mode is not used: files are read and written.
  int OpenImage(unsigned int index, int mode, IImage*& image) override;
  /// The size of a file.
  int SetImageSizeBytes(std::uint64_t sizeBytes) override;
  int SetPath(const wchar_t* path) override;
  int SetStem(const wchar_t* stem) override;
  /// Waits while earlier full files are being closed, if they are large or too many.
  int CloseImage(IImage* image) override;
  /// Removes the files of an earlier run, of any length, from the directory.
  int Remove() override;

  /// The open file that OpenImage() returned as @p image. Throws std::invalid_argument when there is none.
  TSpoolFile& FileOf(const IImage* image);

  /// The path in the bytes of the operating system, which need not be text.
  void SetDirectory(const std::string& directory) { directory_ = directory; }
  void SetVolume(const TSpoolVolume& volume) { volume_ = volume; }
  /// The size of an image, and how many the run has, in all files together. If never called, files are filled to
  /// their ends.
  void SetRun(std::uint64_t imageBytes, std::uint64_t images)
  {
    imageBytes_ = imageBytes;
    runBytes_ = imageBytes * images;
  }
  /// Increases with each piece of a file, of TSpoolFile::kPieceBytes at most, that is written or synced, and with each
  /// file made.
  std::uint64_t Progress() const { return progress_; }
  /// Syncs and closes all files and the index, and checks that the files are still in the directory.
  void Finish();
  /// Images that are known to be on the disk, with their records in the index.
  std::uint64_t ImagesOnDisk();

private:
  using TOpenFiles = std::map<unsigned int, std::unique_ptr<TSpoolFile>>; // by number

  static std::vector<std::unique_ptr<TSpoolFile>> WithRoom();
  void Run() override;
  /// Whether one of them was large.
  bool CloseFiles() EXCLUDES(mutex_);
  void SyncOpenFiles() EXCLUDES(mutex_);
  void SyncIndex() EXCLUDES(mutex_);
  void Close(TSpoolFile& file) EXCLUDES(mutex_);
  void CountImages(const TSpoolFile& file) EXCLUDES(mutex_);
  void CheckFiles() EXCLUDES(mutex_);
  std::string PathOf(unsigned int number) const;
  TOpenFiles::iterator Find(const IImage* image) REQUIRES(mutex_);

  TSpoolFault* const fault_;
  TSpoolIndex* const index_;
  std::string directory_;
  std::string stem_;
  TSpoolVolume volume_;
  std::uint64_t fileBytes_ = 0;
  std::uint64_t imageBytes_ = 0;
  std::uint64_t runBytes_ = UINT64_MAX;
  std::atomic<std::uint64_t> progress_{0};
  TMutex mutex_;
  TCondition changed_;
  TOpenFiles files_ GUARDED_BY(mutex_);
  std::vector<std::unique_ptr<TSpoolFile>> full_ GUARDED_BY(mutex_); // to be closed
  std::vector<std::unique_ptr<TSpoolFile>> closing_;                 // being closed; the thread's
  bool isClosing_ GUARDED_BY(mutex_) = false;                        // there are some
  bool closeNow_ GUARDED_BY(mutex_) = false;                         // and not at the next second
  std::vector<std::uint32_t> syncedImages_ GUARDED_BY(mutex_);       // of each file made, by number
  std::uint64_t imagesInSyncedFiles_ GUARDED_BY(mutex_) = 0;         // their sum
  std::uint64_t imagesOnDisk_ GUARDED_BY(mutex_) = 0;                // of these, with records synced
  bool finishing_ GUARDED_BY(mutex_) = false;
  QuorinUtility::TQuorinWorkThread thread_; // last: it uses all the others
};
