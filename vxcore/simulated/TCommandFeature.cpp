// SPDX-License-Identifier: MIT
// Command feature of a simulated camera.
#include "vxcore/simulated/TCommandFeature.h"

namespace vxsim {

TCommandFeature::TCommandFeature(TFeatureAccess access, uint64_t& revision, std::function<int(TDeviceLock&)> run)
    : TFeature(std::move(access), revision), run_(std::move(run))
{
}

int TCommandFeature::Execute(TDeviceLock& lock)
{
  if (const int code = CheckWrite(); code != VX_SUCCESS) return code;
  return run_(lock);
}

} // namespace vxsim
