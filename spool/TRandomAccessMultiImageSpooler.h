// SPDX-License-Identifier: MIT
// Several images in each file, opened and closed in any order, and the views of their places.
#pragma once

#include "spool/ISpooler.h"
#include "utility/TQuorinCriticalSection.h"

#include <map>

/// One place of a file, at a fixed position. Borrows the file image, which must allow a Lock() for each of its
/// places at once. Its state never changes, so it is as thread-safe as the file image. The constructor throws
/// TSDK3Exception; the operations return what the file image returns.
class TOffsetMultiImage final : public IImage
{
public:
  /// @p position counts images of that size from the start of the file.
  TOffsetMultiImage(IImage* file, std::uint64_t imageSizeBytes, unsigned int position);

  int Lock(unsigned char*& destination) override;
  int Unlock() override;

private:
  IImage* const file_;
  const std::uint64_t imageSizeBytes_;
  const unsigned int position_;
};

/// The places of one file one after another, one for each Lock(). The file is locked by the first and unlocked by the
/// last of imagesPerFile unlocks. Borrows the file image. Thread-safe. Constructor, Lock() and Unlock() throw
/// TSDK3Exception for wrong use; otherwise they return what the file image returns.
class TSerialMultiImage final : public IMultiImage
{
public:
  TSerialMultiImage(IImage* file, std::uint64_t imageSizeBytes, unsigned int imagesPerFile);

  int Lock(unsigned char*& destination) override;
  int Unlock() override;
  /// Unlocks the file whatever has been counted.
  int ForceUnlock() override;

private:
  IImage* const file_;
  const std::uint64_t imageSizeBytes_;
  const unsigned int imagesPerFile_;
  unsigned int lockCount_ GUARDED_BY(lock_) = 0;
  unsigned int unlockCount_ GUARDED_BY(lock_) = 0;
  unsigned char* nextDestination_ GUARDED_BY(lock_) = nullptr;
  QuorinUtility::TQuorinCriticalSection lock_;
};

/// Puts a fixed number of images into each file of a file spooler, whose "images" are whole files: image n, from
/// 0, is in file n / imagesPerFile. A file is open exactly while one of its images is. Borrows the file spooler,
/// and owns the images until they are closed. Thread-safe; the file spooler is called by one thread at a time.
/// Operations return what the file spooler returns. The constructor, and OpenImage() when the image itself cannot
/// be made, throw TSDK3Exception.
class TRandomAccessMultiImageSpooler : public ISpooler
{
public:
  TRandomAccessMultiImageSpooler(ISpooler* fileSpooler, unsigned int imagesPerFile);
  TRandomAccessMultiImageSpooler(const TRandomAccessMultiImageSpooler&) = delete;
  TRandomAccessMultiImageSpooler& operator=(const TRandomAccessMultiImageSpooler&) = delete;

  int OpenImage(unsigned int index, int mode, IImage*& image) override;
  /// @p sizeBytes is that of one image. 1, and nothing changed, when a file would have 2^64 bytes or more.
  int SetImageSizeBytes(std::uint64_t sizeBytes) override;
  int SetPath(const wchar_t* path) override;
  int SetStem(const wchar_t* stem) override;
  /// Destroys the image, and closes its file if it was the last one. 1 for an image that is not open here.
  int CloseImage(IImage* image) override;
  int Remove() override;
  /// Makes the image at that place of a file.
  virtual IImage* CreateOffsetMultiImage(IImage* file, std::uint64_t imageSizeBytes, unsigned int position);

  /// Closes what is still open.
  virtual ~TRandomAccessMultiImageSpooler();

protected:
  /// Closes what is still open. For destructors of classes whose images use members of theirs.
  void CloseAll();

private:
  int OpenFile(int file, int mode) REQUIRES(lock_);
  /// Counts @p images fewer as open in a file, and closes it when none is left.
  int ReleaseFile(int file, int images) REQUIRES(lock_);

  ISpooler* const fileSpooler_;
  const unsigned int imagesPerFile_;
  std::map<IImage*, int> imageToFile_ GUARDED_BY(lock_);
  std::map<int, int> openCounts_ GUARDED_BY(lock_); // open images of each file that is open
  std::map<int, IImage*> files_ GUARDED_BY(lock_);  // the same files
  std::uint64_t imageSizeBytes_ GUARDED_BY(lock_) = 0;
  QuorinUtility::TQuorinCriticalSection lock_;
};
