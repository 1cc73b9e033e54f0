// SPDX-License-Identifier: MIT
// The features of one camera, by name.
#pragma once

#include "vxcore/simulated/TFeature.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>

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
  /// Hashes a name by its length and four of its characters, which differ for nearly all names of a camera.
  struct TNameHash
  {
    using is_transparent = void;
    std::size_t operator()(std::wstring_view name) const noexcept
    {
      const std::size_t length = name.size();
      std::size_t hash = length;
      if (length == 0) return hash;
      for (const std::size_t position : {std::size_t{0}, length / 3, length * 2 / 3, length - 1})
        hash = hash * 37 + static_cast<std::size_t>(name[position]);
      return hash;
    }
  };

  std::unordered_map<std::wstring, std::unique_ptr<IFeature>, TNameHash, std::equal_to<>> features_;
};

} // namespace vxsim
