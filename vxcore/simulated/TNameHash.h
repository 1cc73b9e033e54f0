// SPDX-License-Identifier: MIT
// How features are found by name.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <unordered_map>

namespace vxsim {

/// Hashes a feature's name by its length and four of its characters, which tell nearly all names of a camera apart.
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

/// Values by the name of a feature; looked up without a copy of the name.
template <typename Value>
using TByName = std::unordered_map<std::wstring, Value, TNameHash, std::equal_to<>>;

} // namespace vxsim
