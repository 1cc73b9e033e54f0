// SPDX-License-Identifier: MIT
// One frame on its way to disk.
#pragma once

class IImage;

/// One frame on its way to disk. A plain value that owns nothing; the default one marks the end of a stream.
struct TSpoolFileData
{
  TSpoolFileData() = default;
  TSpoolFileData(unsigned char* frame, int imageIndex, int frameBytes)
      : buffer(frame), index(imageIndex), sizeBytes(frameBytes)
  {
  }

  /// Compares what is to be written, not how far that has come.
  friend bool operator==(const TSpoolFileData& left, const TSpoolFileData& right)
  {
    return left.buffer == right.buffer && left.index == right.index && left.sizeBytes == right.sizeBytes;
  }

  unsigned char* buffer = nullptr; ///< the frame's slot in the ring
  int index = 0;                   ///< image number from 0
  int sizeBytes = 0;
  IImage* image = nullptr; ///< the image it was written to, which may be closed already
  int error = 0;           ///< 1 when it could not be written
};
