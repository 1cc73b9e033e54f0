// SPDX-License-Identifier: MIT
// Takes frames out of a dispatch queue into dense arrays of the caller's pixel type.
#pragma once

#include "retrieval/TLineParser.h"

#include <cstdint>
#include <optional>

class TDispatchQueue;
class TAcquiredImage;

/// Copies frames whose pixels are stored as @p Src into arrays of @p Dst. The retrieval entry points build one on
/// their stack with the present geometry, use it for one call and drop it; it borrows the queue, and a null queue
/// counts as an empty one. Reentrant: one thread per object. Reports errors as result codes, never throws.
///
/// Sizes of arrays are counted in pixels. The present geometry need not be that of the stored frames: a copy that
/// would leave the stored frame is refused, and so is a frame of more pixels than an int can count.
template <class Src, class Dst>
class TFetchImage
{
public:
  TFetchImage(TDispatchQueue* queue, int width, int height, int strideBytes);
  virtual ~TFetchImage();

  /// Converts @p pixelCount pixels; a frame without padding is given as one row.
  virtual void copyImage(Dst* destinationRow, unsigned char* sourceRow, int pixelCount) = 0;

  /// Copies one frame without the padding of its rows. RC_COPY_REFUSED when either pointer is null or the geometry
  /// does not fit the stored frame; nothing is written then.
  unsigned int copyImageByLine(Dst* destination, unsigned char* frame);

  /// Copies the frame after @p lastIndex, or the oldest one left, and moves @p lastIndex on to it. A frame that is
  /// lost in between moves the cursor too and counts as success, without a copy.
  unsigned int GetNextOldestImage(Dst* destination, unsigned long size, int& lastIndex);
  /// The same in two steps: everything but the copy, and the copy of image @p number, if it is there.
  unsigned int MoveToNextOldestImage(const Dst* destination, unsigned long size, int& lastIndex);
  void CopyImage(Dst* destination, int number);

  /// Copies all frames of the run back to back. @p size is checked against one frame; callers provide room for
  /// all. RC_ACQUIRING, with the frames up to then copied, when another run has begun since the object was made: there
  /// is no room for the frames of that one.
  unsigned int GetAcquiredData(Dst* destination, unsigned long size);

  /// Copies the newest frame. When the camera may have reached it during the copy, the then newest is copied
  /// instead, so that the caller does not get parts of two frames; this is given up after a few tries.
  unsigned int GetMostRecentImage(Dst* destination, unsigned long size);

  /// Copies frame @p number if the queue confirms afterwards that the copy is of this frame alone; otherwise
  /// RC_NO_NEW_DATA, with anything in @p destination. @p ticks, if not null, receives the camera's clock value in it;
  /// 0 when it has none, and after every code but RC_SUCCESS.
  unsigned int GetIntactImage(long number, Dst* destination, unsigned long size, long long* ticks);

  /// Copies the first frame there is of the numbers @p first to @p last, to the place its number has in the range,
  /// and returns the first and last number found (0 when none; null pointers are skipped). @p size is that of one
  /// frame. Callers rely on the later frames not being copied.
  unsigned int GetImages(long first, long last, Dst* destination, unsigned long size, long* validFirst,
                         long* validLast);

protected:
  TFetchImage(const TFetchImage&) = default;
  TFetchImage& operator=(const TFetchImage&) = default;

private:
  /// Bytes that @p pixelCount pixels of one row take in the stored frame.
  virtual std::int64_t sourceRowBytes(std::int64_t pixelCount) const;

  std::uint64_t runNumber() const;
  std::int64_t newestImage() const;
  std::int64_t oldestImage() const;
  bool isFrameSize(unsigned long size) const;
  std::int64_t pixelsPerFrame() const;
  bool fitsStoredFrame() const;
  bool rowsAreAdjacent() const;
  unsigned int copyAcquiredImage(Dst* destination, const TAcquiredImage& image);
  void noteCopy(const Dst* destination) const;
  void copyToPosition(Dst* destination, std::int64_t position, const TAcquiredImage& image);

  TDispatchQueue* dispatchQueue_;
  int width_;
  int height_;
  int stride_;
  // Both exist only during a copy.
  std::optional<TLineParser> sourceLines_;
  std::optional<TLineParser> destinationLines_;
  std::uint64_t runNumber_;     // when the object was made
  std::int64_t imageSizeBytes_; // of the frame at hand; before the first, of the queue's frames
};

extern template class TFetchImage<unsigned char, unsigned char>;
extern template class TFetchImage<unsigned char, unsigned short>;
extern template class TFetchImage<unsigned char, int>;
extern template class TFetchImage<unsigned short, unsigned short>;
extern template class TFetchImage<unsigned short, int>;
extern template class TFetchImage<int, unsigned short>;
extern template class TFetchImage<int, int>;
