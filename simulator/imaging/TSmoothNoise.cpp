// SPDX-License-Identifier: MIT
// Cloud-like random brightness for scene backgrounds.
#include "simulator/imaging/TSmoothNoise.h"

#include "simulator/imaging/TRandomHash.h"

namespace vxsim {
namespace {

float Ease(float t)
{
  return t * t * t * (t * (t * 6.0f - 15.0f) + 10.0f);
}

} // namespace

float TSmoothNoise::Corner(int column, int row) const
{
  const std::uint64_t place =
      (static_cast<std::uint64_t>(static_cast<std::uint32_t>(column)) << 32) | static_cast<std::uint32_t>(row);
  return static_cast<float>(MixBits(seed_ ^ MixBits(place)) >> 40) * 0x1.0p-24f;
}

float TSmoothNoise::ColumnAt(int column, int row, float down) const
{
  const float above = Corner(column, row);
  return above + (Corner(column, row + 1) - above) * down;
}

void TSmoothNoise::AddRow(int row, int left, float amplitude, std::span<float> values) const
{
  const auto cell = static_cast<float>(cellPixels_);
  const int cellRow = row / cellPixels_;
  const float down = Ease(static_cast<float>(row % cellPixels_) / cell);
  int cellColumn = left / cellPixels_;
  int inCell = left % cellPixels_;
  float from = ColumnAt(cellColumn, cellRow, down);
  float to = ColumnAt(cellColumn + 1, cellRow, down);
  for (float& value : values) {
    value += amplitude * (from + (to - from) * Ease(static_cast<float>(inCell) / cell));
    if (++inCell < cellPixels_) continue;
    inCell = 0;
    ++cellColumn;
    from = to;
    to = ColumnAt(cellColumn + 1, cellRow, down);
  }
}

} // namespace vxsim
