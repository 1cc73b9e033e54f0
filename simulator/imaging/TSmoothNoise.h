// SPDX-License-Identifier: MIT
// Cloud-like random brightness for scene backgrounds.
#pragma once

#include <cstdint>
#include <span>

namespace vxsim {

/// A random surface between 0 and 1 that changes over cellPixels. Constant after construction, reentrant.
class TSmoothNoise final
{
public:
  TSmoothNoise(std::uint64_t seed, int cellPixels) : seed_(seed), cellPixels_(cellPixels) {}

  /// Adds amplitude times the surface to a row from column left on.
  void AddRow(int row, int left, float amplitude, std::span<float> values) const;

private:
  float Corner(int column, int row) const;
  float ColumnAt(int column, int row, float down) const;

  std::uint64_t seed_;
  int cellPixels_;
};

} // namespace vxsim
