// SPDX-License-Identifier: MIT
// From the pixels that a camera sends to the pixels of an image.
#pragma once

#include "vxcore/genicam/pixel_formats.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace vxgenicam {

/// A frame as the camera sends it: rows follow each other without a gap, so that in packed layouts with an odd width every
/// second row begins in the middle of a byte. Only with @p rowPadding each row begins with a new byte.
struct TFrameShape
{
  EPixelFormat format = EPixelFormat::Mono8;
  std::size_t width = 0;
  std::size_t height = 0;
  std::size_t rowPadding = 0; ///< bytes behind each row

  bool operator==(const TFrameShape&) const = default;
  /// Bytes of the whole frame.
  std::size_t Bytes() const;
};

/// The part of a frame that is the image.
struct TCrop
{
  std::size_t left = 0;
  std::size_t top = 0;
  std::size_t width = 0;
  std::size_t height = 0;
};

/// Makes images of one encoding from frames of one shape. The crop lies within the shape, and the format is one of
/// SourcesOf(encoding), or any for sums. Source and destination need no alignment. Owned by TAcquisition; reentrant.
class TFrameConverter final
{
public:
  TFrameConverter(const TFrameShape& shape, const TCrop& crop, EEncoding encoding);

  const TFrameShape& Shape() const { return shape_; }
  /// Bytes of an image.
  std::size_t ImageBytes() const { return stride_ * crop_.height; }

  /// @param frame  at least Shape().Bytes()
  void Convert(const unsigned char* frame, unsigned char* image);
  /// Adds a frame to the sums, which are made at the first call.
  void Add(const unsigned char* frame);
  /// Writes the sums as an image, clamped to what a pixel of the encoding holds, and begins anew.
  void TakeSums(unsigned char* image);

private:
  /// Where a pixel is: the byte it begins in, and whether it is the second of its group of two.
  struct TPlace
  {
    std::size_t byte = 0;
    bool isSecond = false;
  };

  TPlace PlaceOf(std::size_t row) const;
  void UnpackRow(const unsigned char* frame, std::size_t row);
  void PackRow(unsigned char* image) const;

  TFrameShape shape_;
  TCrop crop_;
  EEncoding encoding_;
  std::size_t stride_;
  std::vector<std::uint32_t> row_; ///< one row's values
  std::vector<std::uint32_t> sums_;
};

/// From Mono12p to Mono12Packed, @p groups groups of three bytes. Source and destination do not overlap.
void RepackGroups(const unsigned char* from, unsigned char* to, std::size_t groups);

} // namespace vxgenicam
