// SPDX-License-Identifier: MIT
// Which feature of a camera's description stands behind which feature of the library.
#pragma once

#include "vxcore/backend/configuration_text.h"
#include "vxcore/genicam/map_rows.h"
#include "vxcore/genicam/TNodes.h"

#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace vxgenicam {

/// The camera's feature (a node of its description) behind one of the library, and how its values are converted.
struct TSource
{
  std::string node; ///< "": the camera has none
  double scale = 1.0;
  double offset = 0.0;

  explicit operator bool() const { return !node.empty(); }
  /// Divides by the inverse of a small scale, which is a whole number: 10 us is 1e-05 s then, and not 9.999999999999999e-06.
  double FromCamera(double value) const
  {
    return (scale > -1.0 && scale < 1.0 ? value / (1.0 / scale) : value * scale) + offset;
  }
  double ToCamera(double value) const { return (value - offset) / scale; }
};

/// The rows of map_rows.h, with those that a map file replaces. Owned by TGenICamConfiguration; constant once it is read.
class TFeatureMap final
{
public:
  /// Reads a map file: lines `feature = node`, `feature = node, scale` or `feature = node, scale, offset`. False, with a
  /// message, when it cannot be read or has an error.
  bool Read(const std::string& path, std::string& error);

  /// Of the names of a row the first that the camera has. A row of the map file has one.
  TSource SourceOf(std::string_view feature, const TNodes& nodes) const;
  /// The camera's features that SourceOf() looks for, the best first; none for a feature that only a map file can name.
  std::vector<std::string> NamesFor(std::string_view feature) const;
  /// What makes a feature: MapFile when the map file has it, Emulated when there is no row.
  EOrigin OriginOf(std::string_view feature) const;

private:
  bool ReadEntry(const vxcore::TConfigurationEntry& entry, std::string& error);

  std::map<std::string, TSource, std::less<>> replaced_;
};

} // namespace vxgenicam
