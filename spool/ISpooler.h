// SPDX-License-Identifier: MIT
// Where spooled images go: a spooler, and the images that it opens.
#pragma once

#include <cstdint>

/// A place in a spool file, or a whole one, for one or more frames. Owned by the spooler that opened it, until
/// ISpooler::CloseImage(). One thread at a time; several images of one file may be locked at once. Operations return 0
/// for success.
class IImage
{
public:
  /// On success @p destination is where to copy a frame, valid until Unlock(). An image for several frames gives the
  /// place of the next one each time.
  virtual int Lock(unsigned char*& destination) = 0;
  /// The frame is there. What an image for several frames has, it need not write before the last of them, or before an
  /// Unlock() without a Lock().
  virtual int Unlock() = 0;
  virtual ~IImage() = default;
};

/// An image that consists of several places.
class IMultiImage : public IImage
{
public:
  /// Unlocks whatever is still locked. Returns 0 for success.
  virtual int ForceUnlock() = 0;
};

/// Opens and closes the images that frames are written to. Operations return 0 for success. The order of the operations
/// is fixed; a spooler is not destroyed through this interface.
class ISpooler
{
public:
  /// The mode that images are opened in: created if need be, for reading and writing.
  static constexpr int kReadWrite = 6;

  /// On success @p image is the image of that number, from 0, which the caller closes with CloseImage().
  virtual int OpenImage(unsigned int index, int mode, IImage*& image) = 0;
  /// Once, before the first image is opened.
  virtual int SetImageSizeBytes(std::uint64_t sizeBytes) = 0;
  /// Directory and common start of the files' names; the texts are copied.
  virtual int SetPath(const wchar_t* path) = 0;
  virtual int SetStem(const wchar_t* stem) = 0;
  virtual int CloseImage(IImage* image) = 0;
  /// Removes the files.
  virtual int Remove() = 0;

protected:
  ~ISpooler() = default;
};
