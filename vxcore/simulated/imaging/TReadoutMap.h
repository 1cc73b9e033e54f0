// SPDX-License-Identifier: MIT
// Which sensor pixels go into which pixel of the frame.
#pragma once

#include "vxcore/simulated/imaging/TFrameSettings.h"

#include <span>
#include <vector>

namespace vxsim {

/// Area of interest, binning and tracks as look-ups in both directions. Needs settings without fault. Constant
/// after construction, reentrant.
class TReadoutMap final
{
public:
  TReadoutMap(const TSensorSettings& sensor, const TGeometrySettings& geometry);

  int Width() const { return widthPixels_; }
  int Height() const { return static_cast<int>(rows_.size()); }
  int HorizontalBin() const { return horizontalBin_; }
  int SensorHeight() const { return static_cast<int>(firstTarget_.size()) - 1; }

  /// The sensor columns read out: from FirstColumn() to before EndColumn().
  int FirstColumn() const { return leftPixels_; }
  int EndColumn() const { return leftPixels_ + widthPixels_ * horizontalBin_; }

  /// The sensor rows that make an output row.
  const TTrack& SensorRows(int outputRow) const { return rows_[static_cast<std::size_t>(outputRow)]; }

  /// Sensor pixels in each pixel of an output row.
  int PixelsSummed(int outputRow) const { return horizontalBin_ * SensorRows(outputRow).rowCount; }

  /// The output rows that a sensor row goes into: none, one, or several where tracks overlap.
  std::span<const int> OutputRows(int sensorRow) const;

private:
  int leftPixels_;
  int widthPixels_;
  int horizontalBin_;
  std::vector<TTrack> rows_;
  std::vector<std::size_t> firstTarget_; // of a sensor row, in targets_; one more at the end
  std::vector<int> targets_;
};

} // namespace vxsim
