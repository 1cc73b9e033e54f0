// SPDX-License-Identifier: MIT
// Several images in each file, opened and closed in any order.
#pragma once

#include "spool/ISpooler.h"
#include "utility/TQuorinCriticalSection.h"

#include <map>

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

  /// Closes what is open still.
  virtual ~TRandomAccessMultiImageSpooler();

protected:
  /// Closes what is open still. For destructors of classes whose images need what goes before the base does.
  void CloseAll();

private:
  int OpenFile(int file, int mode);
  /// Gives up one image, or none, and closes the file when that leaves none.
  int ReleaseFile(int file, int images);

  ISpooler* const fileSpooler_;
  const unsigned int imagesPerFile_;
  std::map<IImage*, int> imageToFile_; // guarded by lock_, as are all below
  std::map<int, int> openCounts_;      // open images of each file that is open
  std::map<int, IImage*> files_;       // the same files
  std::uint64_t imageSizeBytes_ = 0;
  QuorinUtility::TQuorinCriticalSection lock_;
};
