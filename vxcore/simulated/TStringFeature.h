// SPDX-License-Identifier: MIT
// String feature of a simulated camera.
#pragma once

#include "vxcore/simulated/TFeature.h"

namespace vxsim {

/// String feature with a text of its own. Owned by TFeatureSet, used under the device's lock.
class TStringFeature final : public TFeature
{
public:
  /// Longest text that can be written, terminator included.
  static constexpr int kMaxLength = 64;

  TStringFeature(TFeatureAccess access, uint64_t& revision, std::wstring value);

  int SetString(std::wstring_view value) override;
  int GetString(std::wstring_view& value) const override;
  int GetStringMaxLength(int& length) const override;

private:
  std::wstring value_;
};

} // namespace vxsim
