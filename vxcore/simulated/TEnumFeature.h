// SPDX-License-Identifier: MIT
// Enumerated feature of a simulated camera.
#pragma once

#include "vxcore/simulated/TChoice.h"
#include "vxcore/simulated/TFeature.h"

namespace vxsim {

/// Enumerated feature over a setting of the camera, some values of which may be unavailable under the other
/// settings. Owned by TFeatureSet, used under the device's lock; borrows the setting from the camera's state.
class TEnumFeature final : public TFeature
{
public:
  /// @p available  says whether an index may be chosen now; empty: always
  /// @p chosen         called after a value was chosen, to update what depends on it; may be empty
  /// @p refresh        called before the value is read, where the camera changes it by itself; may be empty
  TEnumFeature(TFeatureAccess access, uint64_t& revision, TChoice& choice, std::function<bool(int)> available,
               std::function<void()> chosen, std::function<void()> refresh = {});

  int SetIndex(int index) override;
  int SetText(std::wstring_view text) override;
  int GetIndex(int& index) const override;
  int GetCount(int& count) const override;
  int GetTextByIndex(int index, std::wstring_view& text) const override;
  int IsIndexAvailable(int index, bool& available) const override;
  int IsIndexImplemented(int index, bool& implemented) const override;

private:
  bool CanChoose(int index) const;

  TChoice& choice_;
  const std::function<bool(int)> available_;
  const std::function<void()> chosen_;
  const std::function<void()> refresh_;
};

} // namespace vxsim
