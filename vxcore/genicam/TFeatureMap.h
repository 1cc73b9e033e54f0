// SPDX-License-Identifier: MIT
// Which feature of a camera's description stands behind which feature of the library.
#pragma once

#include "vxcore/backend/configuration_text.h"
#include "vxcore/genicam/TNodes.h"

#include <array>
#include <map>
#include <span>
#include <string>
#include <string_view>

namespace vxgenicam {

/// What makes a feature.
enum class EOrigin
{
  Derived,  ///< a feature of the camera, which has it by the standard
  Optional, ///< a feature of the camera, which may lack it: then the library lacks it, too
  Emulated, ///< this library, with features of the camera where it needs them
  MapOnly,  ///< a feature of the camera that no standard names: there with a map file only
};

/// One feature of the library: the camera's names for it, the best first, and how a value of the camera becomes one of
/// the library: value * scale + offset.
struct TMapRow
{
  const char* name;
  EOrigin origin;
  std::array<const char*, 3> nodes = {}; ///< null behind the last one
  double scale = 1.0;
};

/// The rows of all features that have a source, in the order of their names.
std::span<const TMapRow> MapRows();

/// Where the values of one feature come from on one camera.
struct TSource
{
  std::string node; ///< "": the camera has none
  double scale = 1.0;
  double offset = 0.0;

  explicit operator bool() const { return !node.empty(); }
  double FromCamera(double value) const { return value * scale + offset; }
  double ToCamera(double value) const { return (value - offset) / scale; }
};

/// The rows, with those that a map file replaces. Constant once it is read.
class TFeatureMap final
{
public:
  /// Reads a map file: lines `feature = node`, `feature = node, scale` or `feature = node, scale, offset`. False, with a
  /// message, when it cannot be read or has an error.
  bool Read(const std::string& path, std::string& error);

  /// Of the names of a row the first that the camera has. A row of the map file has one.
  TSource SourceOf(std::string_view feature, const TNodes& nodes) const;

private:
  bool ReadEntry(const vxcore::TConfigurationEntry& entry, std::string& error);

  std::map<std::string, TSource, std::less<>> replaced_;
};

} // namespace vxgenicam
