// SPDX-License-Identifier: MIT
// What the tables of a camera's features are made of.
#pragma once

#include "vxcore/simulated/TCameraFeatures.h"
#include "vxcore/simulated/TValueFeature.h"

#include <cwchar>
#include <functional>
#include <memory>
#include <span>
#include <utility>

namespace vxsim {

/// What a row of the table works with.
struct TBuild
{
  TCameraState& state;
  const TCameraActions& actions;
  const TFeatureOverride& change;

  TFeatureAccess Access() const
  {
    TFeatureAccess access;
    access.readOnly = change.readOnly;
    return access;
  }
  /// Writable, but not in a run.
  TFeatureAccess IdleOnly() const
  {
    TFeatureAccess access = Access();
    access.writable = [&s = state] { return !s.acquiring; };
    return access;
  }

  std::unique_ptr<IFeature> Int(TFeatureAccess access, TValueBinding<long long> binding) const
  {
    return std::make_unique<TValueFeature<long long>>(std::move(access), state.revision, std::move(binding),
                                                      change);
  }
  std::unique_ptr<IFeature> Float(TFeatureAccess access, TValueBinding<double> binding) const
  {
    return std::make_unique<TValueFeature<double>>(std::move(access), state.revision, std::move(binding), change);
  }
  std::unique_ptr<IFeature> Bool(TFeatureAccess access, bool& value) const
  {
    return Bool(std::move(access), {.get = [&value] { return value; }, .set = [&value](bool v) { value = v; }});
  }
  std::unique_ptr<IFeature> Bool(TFeatureAccess access, TValueBinding<bool> binding) const
  {
    return std::make_unique<TValueFeature<bool>>(std::move(access), state.revision, std::move(binding));
  }
  std::unique_ptr<IFeature> String(const wchar_t* text) const
  {
    TFeatureAccess access;
    access.readOnly = true;
    return std::make_unique<TStringFeature>(std::move(access), state.revision, change.value.value_or(text));
  }
  std::unique_ptr<IFeature> Command(TFeatureAccess access, std::function<int(TDeviceLock&)> run) const
  {
    return std::make_unique<TCommandFeature>(std::move(access), state.revision, std::move(run));
  }
  /// A number that is only read. A configured value takes its place.
  std::unique_ptr<IFeature> Reading(std::function<long long()> get) const
  {
    if (change.value) get = [fixed = std::wcstoll(change.value->c_str(), nullptr, 10)] { return fixed; };
    return Int(Access(), {.get = std::move(get), .set = {}});
  }
  std::unique_ptr<IFeature> Reading(std::function<double()> get) const
  {
    if (change.value) get = [fixed = std::wcstod(change.value->c_str(), nullptr)] { return fixed; };
    return Float(Access(), {.get = std::move(get), .set = {}});
  }
};

/// One feature: its name, how it is made, whether a configured value is set through it or is part of what is made,
/// and the families of models that have it. Models name families, never features, so that none can lack its row.
struct TRow
{
  const wchar_t* name;
  std::unique_ptr<IFeature> (*make)(const TBuild& build);
  bool setsValue = false;
  unsigned family = Family::kCommon;

  bool IsOf(const TCameraModel& model) const { return family == 0 || (model.families & family) != 0; }
};

/// Whether an index is one of @p count places. Checked beside the limits, which a configuration may set to
/// anything, so that nothing is read beyond its end.
inline bool IsPlaceIn(long long place, long long count)
{
  return place >= 0 && place < count;
}

/// The rows of the register file and of the two I2C buses.
std::span<const TRow> BusFeatureRows();

} // namespace vxsim
