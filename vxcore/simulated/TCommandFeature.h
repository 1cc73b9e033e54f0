// SPDX-License-Identifier: MIT
// Command feature of a simulated camera.
#pragma once

#include "vxcore/simulated/TFeature.h"

namespace vxsim {

/// Command feature. Owned by TFeatureSet, used under the device's lock, which a command may release while it
/// waits.
class TCommandFeature final : public TFeature
{
public:
  TCommandFeature(TFeatureAccess access, uint64_t& revision, std::function<int(TDeviceLock&)> run)
      : TFeature(std::move(access), revision), run_(std::move(run))
  {
  }

  bool IsReadable() const override { return false; }
  int Execute(TDeviceLock& lock) override
  {
    const int code = CheckWrite();
    return code == VX_SUCCESS ? run_(lock) : code;
  }

private:
  const std::function<int(TDeviceLock&)> run_;
};

} // namespace vxsim
