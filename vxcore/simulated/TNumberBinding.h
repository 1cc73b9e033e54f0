// SPDX-License-Identifier: MIT
// How a numeric feature reaches its value and its limits.
#pragma once

#include <functional>
#include <optional>

namespace vxsim {

/// The value behind a numeric feature: where it is read, where it is written, and its limits under the present
/// settings. A feature without `set` is read-only.
template <typename Number>
struct TNumberBinding
{
  std::function<Number()> get;
  std::function<void(Number)> set;
  std::function<Number()> minimum;
  std::function<Number()> maximum;
  std::function<bool(Number)> accepts = {}; ///< for what limits cannot say: whether a value between them is good
};

} // namespace vxsim
