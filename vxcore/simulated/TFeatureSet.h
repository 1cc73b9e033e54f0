// SPDX-License-Identifier: MIT
// The features of one camera, by name.
#pragma once

#include "vxcore/simulated/TFeature.h"
#include "vxcore/simulated/TNameHash.h"

#include <memory>
#include <string>

namespace vxsim {

/// Owns the features of one camera and finds them by name. Filled once, when the camera is opened.
class TFeatureSet final
{
public:
  void Add(const std::wstring& name, std::unique_ptr<IFeature> feature) { features_[name] = std::move(feature); }
  /// The feature of exactly that name, or null.
  IFeature* Find(std::wstring_view name) const
  {
    const auto found = features_.find(name);
    return found == features_.end() ? nullptr : found->second.get();
  }

private:
  TByName<std::unique_ptr<IFeature>> features_;
};

} // namespace vxsim
