// SPDX-License-Identifier: MIT
// Which sensor pixels go into which pixel of the frame.
#include "vxcore/simulated/imaging/TReadoutMap.h"

namespace vxsim {

TReadoutMap::TReadoutMap(const TSensorSettings& sensor, const TGeometrySettings& geometry)
    : leftPixels_(geometry.leftPixels),
      widthPixels_(geometry.widthPixels),
      horizontalBin_(geometry.horizontalBin),
      rows_(geometry.tracks),
      firstTarget_(static_cast<std::size_t>(sensor.heightPixels) + 1, 0)
{
  if (rows_.empty())
    for (int row = 0; row < geometry.heightPixels; ++row)
      rows_.push_back({geometry.topPixels + row * geometry.verticalBin, geometry.verticalBin});

  const auto eachPair = [this](auto visit) {
    for (std::size_t output = 0; output < rows_.size(); ++output)
      for (int i = 0; i < rows_[output].rowCount; ++i)
        visit(static_cast<std::size_t>(rows_[output].topRow + i), static_cast<int>(output));
  };
  eachPair([this](std::size_t sensorRow, int) { ++firstTarget_[sensorRow + 1]; });
  for (std::size_t i = 1; i < firstTarget_.size(); ++i) firstTarget_[i] += firstTarget_[i - 1];
  targets_.resize(firstTarget_.back());
  std::vector<std::size_t> next = firstTarget_;
  eachPair([&](std::size_t sensorRow, int output) { targets_[next[sensorRow]++] = output; });
}

std::span<const int> TReadoutMap::OutputRows(int sensorRow) const
{
  const std::size_t from = firstTarget_[static_cast<std::size_t>(sensorRow)];
  const std::size_t to = firstTarget_[static_cast<std::size_t>(sensorRow) + 1];
  return std::span<const int>(targets_).subspan(from, to - from);
}

} // namespace vxsim
