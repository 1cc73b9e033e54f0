// SPDX-License-Identifier: MIT
// The names of the features that cameras may have. The feature library cannot be asked for them.
#pragma once

#include <span>
#include <string>

namespace vxtool {

struct TKnownFeature
{
  const char* name;
  const char* unit; ///< "" for none
};

/// In groups: what the camera is, image, times and triggers, runs, read-out, cooling, service.
std::span<const TKnownFeature> KnownFeatures();
/// The unit of a feature; "" for none, also when the feature is not known.
const char* UnitOfFeature(const std::string& name);

} // namespace vxtool
