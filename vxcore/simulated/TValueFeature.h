// SPDX-License-Identifier: MIT
// Integer, float and boolean features of a simulated camera.
#pragma once

#include "vxcore/simulated/TFeature.h"

#include <concepts>
#include <functional>
#include <optional>
#include <utility>

namespace vxsim {

/// The value behind a feature: where it is read, where it is written, and its limits under the present settings.
/// A feature without `set` is read-only; one without limits has its value as both.
template <typename Value>
struct TValueBinding
{
  std::function<Value()> get;
  std::function<void(Value)> set;
  std::function<Value()> minimum = {};
  std::function<Value()> maximum = {};
  std::function<bool(Value)> accepts =
      {}; ///< whether a value within the limits is valid, where limits do not suffice
};

/// A feature whose value is a `long long`, a `double` or a `bool`; the operations of the other kinds are refused.
/// Limits may follow from other settings; a configuration may replace them. Owned by TFeatureSet, used under the
/// device's lock.
template <typename Value>
class TValueFeature final : public TFeature
{
public:
  TValueFeature(TFeatureAccess access, uint64_t& revision, TValueBinding<Value> binding,
                const TFeatureOverride& change = {})
      : TFeature(std::move(access), revision),
        binding_(std::move(binding)),
        fixedMinimum_(change.minimum),
        fixedMaximum_(change.maximum)
  {
  }

  bool IsWritable() const override { return binding_.set && TFeature::IsWritable(); }

  int SetInt(long long value) override { return Write(value); }
  int GetInt(long long& value) const override { return Read(value, &TValueFeature::Present); }
  int GetIntMin(long long& minimum) const override { return Read(minimum, &TValueFeature::Minimum); }
  int GetIntMax(long long& maximum) const override { return Read(maximum, &TValueFeature::Maximum); }

  int SetFloat(double value) override { return Write(value); }
  int GetFloat(double& value) const override { return Read(value, &TValueFeature::Present); }
  int GetFloatMin(double& minimum) const override { return Read(minimum, &TValueFeature::Minimum); }
  int GetFloatMax(double& maximum) const override { return Read(maximum, &TValueFeature::Maximum); }

  int SetBool(bool value) override { return Write(value); }
  int GetBool(bool& value) const override { return Read(value, &TValueFeature::Present); }

private:
  template <typename Asked>
  int Write(Asked value)
  {
    if constexpr (!std::same_as<Asked, Value>)
      return VX_ERR_WRONG_KIND;
    else {
      if (const int code = CheckWrite(); code != VX_SUCCESS) return code;
      if (!binding_.set) return VX_ERR_NOT_WRITABLE;
      if constexpr (!std::same_as<Value, bool>) {
        if (!(value >= Minimum() && value <= Maximum())) return VX_ERR_OUT_OF_RANGE; // also what is not a number
      }
      if (binding_.accepts && !binding_.accepts(value)) return VX_ERR_OUT_OF_RANGE;
      binding_.set(value);
      Changed();
      return VX_SUCCESS;
    }
  }

  template <typename Asked>
  int Read(Asked& value, Value (TValueFeature::*read)() const) const
  {
    if constexpr (!std::same_as<Asked, Value>)
      return VX_ERR_WRONG_KIND;
    else {
      if (const int code = CheckRead(); code != VX_SUCCESS) return code;
      value = (this->*read)();
      return VX_SUCCESS;
    }
  }

  Value Present() const { return binding_.get(); }
  Value Minimum() const
  {
    if (fixedMinimum_) return static_cast<Value>(*fixedMinimum_);
    return binding_.minimum ? binding_.minimum() : binding_.get();
  }
  Value Maximum() const
  {
    if (fixedMaximum_) return static_cast<Value>(*fixedMaximum_);
    return binding_.maximum ? binding_.maximum() : binding_.get();
  }

  const TValueBinding<Value> binding_;
  const std::optional<double> fixedMinimum_;
  const std::optional<double> fixedMaximum_;
};

} // namespace vxsim
