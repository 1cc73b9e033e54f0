// SPDX-License-Identifier: MIT
// String feature of a simulated camera.
#pragma once

#include "vxcore/simulated/TFeature.h"

#include <algorithm>

namespace vxsim {

/// String feature that owns its text. Owned by TFeatureSet, used under the device's lock.
class TStringFeature final : public TFeature
{
public:
  /// Longest text that can be written, terminator included.
  static constexpr int kMaxLength = 64;

  TStringFeature(TFeatureAccess access, uint64_t& revision, std::wstring value)
      : TFeature(std::move(access), revision), value_(std::move(value))
  {
  }

  int SetString(std::wstring_view value) override
  {
    if (const int code = CheckWrite(); code != VX_SUCCESS) return code;
    if (value.size() + 1 > static_cast<size_t>(kMaxLength)) return VX_ERR_OUT_OF_RANGE;
    value_ = value;
    Changed();
    return VX_SUCCESS;
  }
  int GetString(std::wstring_view& value) const override
  {
    if (const int code = CheckRead(); code != VX_SUCCESS) return code;
    value = value_;
    return VX_SUCCESS;
  }
  int GetStringMaxLength(int& length) const override
  {
    // A configured text may be longer than what can be written.
    length = std::max(kMaxLength, static_cast<int>(value_.size()) + 1);
    return VX_SUCCESS;
  }

private:
  std::wstring value_;
};

} // namespace vxsim
