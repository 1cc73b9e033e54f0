// SPDX-License-Identifier: MIT
// What all kinds of simulated features have in common, and the kinds that have no limits: commands and texts.
#pragma once

#include "vxcore/backend/IFeature.h"

#include <algorithm>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace vxsim {

using vxcore::IFeature;
using vxcore::TDeviceLock;

/// When a feature may be read and written. An empty condition is always true.
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
