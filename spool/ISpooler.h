// SPDX-License-Identifier: MIT
// Where spooled images go.
#pragma once

#include <cstdint>

class IImage;

/// Opens and closes the places that spooled images are written to. Operations return 0 for success. The order of
/// the operations is kept; nobody destroys a spooler through this interface.
class ISpooler
{
public:
  /// The mode that images are opened in: created if need be, for reading and writing.
  static constexpr int kReadWrite = 6;

  /// On success @p image is the image of that number, from 0, and the caller gives it back with CloseImage().
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
