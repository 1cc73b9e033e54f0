// SPDX-License-Identifier: MIT
// Where the features of a camera come from.
#pragma once

#include <string>
#include <vector>

namespace vxtool {

/// The feature whose text has the rows.
constexpr const char* kFeatureSources = "FeatureSources";

/// One feature that a camera has or may have.
struct TFeatureSource
{
  std::string name;
  std::string origin;                  ///< "derived", "optional", "emulated", "map file"; else where the camera is
  std::string behind;                  ///< the feature of the camera's own description; "" for none
  std::vector<std::string> candidates; ///< the features of its description that can be behind it
  double scale = 1.0;                  ///< value = value of the camera's feature * scale + offset
  double offset = 0.0;
};

/// From the text of the feature "FeatureSources": six columns with tabs between, as the list of members. A camera without
/// it has the features that are known, and as origin what "DeviceSource" says.
std::vector<TFeatureSource> FeatureSourcesOf(int handle);

/// Why a camera has no such feature.
std::string WhyNoFeature(const TFeatureSource& source);

} // namespace vxtool
