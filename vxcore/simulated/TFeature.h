// SPDX-License-Identifier: MIT
// What all kinds of simulated features have in common: access rules and limits set from outside.
#pragma once

#include "vxcore/backend/IFeature.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace vxsim {

using vxcore::IFeature;
using vxcore::TDeviceLock;

/// When a feature may be read and written. Empty conditions always hold.
struct TFeatureAccess
{
  std::function<bool()> available; ///< false: reads and writes answer "not available"
  std::function<bool()> writable;  ///< false: writes answer "not writable"
  bool readOnly = false;
};

/// What a configuration changes about a feature of a model.
struct TFeatureOverride
{
  bool remove = false;
  bool readOnly = false;
  std::optional<std::wstring> value;
  std::optional<double> minimum;
  std::optional<double> maximum;
  std::optional<std::vector<std::wstring>> texts;
};

/// Base of the simulated features: answers the access questions, and counts changes so that the camera knows when
/// what it derives from its settings is stale. Borrows the change counter from the camera's state.
class TFeature : public IFeature
{
public:
  TFeature(TFeatureAccess access, uint64_t& revision) : access_(std::move(access)), revision_(revision) {}

  bool IsReadable() const override { return CheckRead() == VX_SUCCESS; }
  bool IsWritable() const override { return CheckWrite() == VX_SUCCESS; }

protected:
  int CheckRead() const { return IsAvailable() ? VX_SUCCESS : VX_ERR_NOT_AVAILABLE; }
  int CheckWrite() const
  {
    if (access_.readOnly) return VX_ERR_NOT_WRITABLE;
    if (!IsAvailable()) return VX_ERR_NOT_AVAILABLE;
    if (access_.writable && !access_.writable()) return VX_ERR_NOT_WRITABLE;
    return VX_SUCCESS;
  }
  void Changed() { ++revision_; }

private:
  bool IsAvailable() const { return !access_.available || access_.available(); }

  const TFeatureAccess access_;
  uint64_t& revision_;
};

} // namespace vxsim
