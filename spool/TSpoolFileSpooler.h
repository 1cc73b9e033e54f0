// SPDX-License-Identifier: MIT
// Makes, hands out and closes the files of a spooled run.
#pragma once

#include "spool/ISpooler.h"
#include "spool/TSpoolVolume.h"

#include <atomic>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>

class TSpoolFault;
class TSpoolFile;
class TSpoolFileCloser;

/// The spooler whose images are whole files: "<path>/<stem>_<ten digits>.dat". A file stays open after
/// CloseImage() until it is full, or until Finish(), since the next image of it may come at any time. Owned by the
/// run's pipeline; borrows the fault. Thread-safe, but for the settings, which are made before the first file. The
/// image size is that of a file.
class TSpoolFileSpooler final : public ISpooler
{
public:
  explicit TSpoolFileSpooler(TSpoolFault* fault);
  ~TSpoolFileSpooler();

  /// @p mode is not used: files are read and written.
  int OpenImage(unsigned int index, int mode, IImage*& image) override;
  int SetImageSizeBytes(std::uint64_t sizeBytes) override;
  int SetPath(const wchar_t* path) override;
  int SetStem(const wchar_t* stem) override;
  int CloseImage(IImage* image) override;
  /// Removes the files of an earlier run, of any length, from the directory.
  int Remove() override;

  /// The path as the operating system has it, which need not be text.
  void SetDirectory(const std::string& directory) { directory_ = directory; }
  void SetVolume(const TSpoolVolume& volume) { volume_ = volume; }
  /// Rises with each piece of a file, of TSpoolFile::kPieceBytes at most, that is written or synced, and with each
  /// file made.
  std::uint64_t Progress() const { return progress_; }
  /// Brings all files to the disk and closes them. What fails is raised as the fault.
  void Finish();
  /// Has the page cache give up what is on the disk of all files made. A hint: files where it fails stay there. Only
  /// a lack of memory makes it throw.
  void LeavePageCache();

private:
  std::string PathOf(unsigned int number) const;
  bool IsOwnFile(const std::string& name) const;

  TSpoolFault* fault_;
  std::string directory_;
  std::string stem_;
  TSpoolVolume volume_;
  std::uint64_t fileBytes_ = 0;
  std::atomic<std::uint64_t> progress_{0};
  std::unique_ptr<TSpoolFileCloser> closer_;
  std::mutex mutex_;
  std::map<unsigned int, std::unique_ptr<TSpoolFile>> files_; // open ones; guarded by mutex_
  unsigned int made_ = 0; // one more than the highest number; guarded by mutex_
};
