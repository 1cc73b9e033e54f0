// SPDX-License-Identifier: MIT
// The part of the sensor that images show, and what the camera sends for it.
#pragma once

#include "vxcore/genicam/TFeatureMap.h"
#include "vxcore/genicam/TFrameConverter.h"

namespace vxgenicam {

/// The image area of one camera, with its binning. A camera may take only multiples of some number of pixels, or no
/// area at all; then it sends the next larger one that it can, and the image is cut out of that. Positions are in sensor
/// pixels from 1, sides in pixels of the image. Operations answer `VX_` codes. Owned by TGenICamCamera, borrows the
/// nodes; used under the device's lock.
class TImageArea final
{
public:
  enum EAxis
  {
    Horizontal,
    Vertical
  };

  TImageArea(TNodes& nodes, const TFeatureMap& map);

  /// Sets the whole sensor without binning.
  int Reset();

  int Start(EAxis axis) const { return static_cast<int>(axes_[axis].start); }
  int Side(EAxis axis) const { return static_cast<int>(axes_[axis].side); }
  long long Bin(EAxis axis) const { return axes_[axis].bin; }
  /// The longest side with the present binning.
  long long MaxSide(EAxis axis) const { return axes_[axis].sensor / axes_[axis].bin; }
  long long SensorSide(EAxis axis) const { return axes_[axis].sensor; }
  bool HasBinning(EAxis axis) const { return static_cast<bool>(axes_[axis].binning); }
  long long MaxBin(EAxis axis) const;

  /// A start beyond the sensor, or too near to its end for the present side, is out of range.
  int SetStart(EAxis axis, long long start);
  /// A side that fits the sensor but not behind the present start moves the start.
  int SetSide(EAxis axis, long long side);
  /// Keeps the area as far as the sensor has it.
  int SetBin(EAxis axis, long long bin);

  /// What the camera sends now, in @p format, and where the image is in it.
  int ReadShape(EPixelFormat format, TFrameShape& shape, TCrop& crop) const;

private:
  struct TAxis
  {
    TSource offset; ///< the camera's features
    TSource length;
    TSource binning;
    long long sensor = 1; ///< the longest image, in sensor pixels
    long long bin = 1;
    long long start = 1; ///< as asked for
    long long side = 1;

    long long First() const { return (start - 1) / bin; } ///< first pixel of the image, from 0
  };

  int Write(const TAxis& axis);
  int Cover(const TAxis& axis);
  int ReadSent(const TAxis& axis, long long& first, long long& length) const;
  int Change(EAxis axis, const TAxis& changed);

  TNodes& nodes_;
  TAxis axes_[2];
};

} // namespace vxgenicam
