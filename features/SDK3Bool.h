// SPDX-License-Identifier: MIT
// A boolean feature of an open device.
#pragma once

#include "features/IBool.h"

/// IBool over one feature of one open device. Owned by its camera's record; the feature name is borrowed and must
/// be a constant.
class SDK3Bool final : public IBool
{
public:
  SDK3Bool(int coreHandle, const wchar_t* feature) : coreHandle_(coreHandle), feature_(feature) {}

  int SetBool(bool value) override;
  /// Leaves @p value as it was when the read fails.
  int GetBool(bool& value) override;

private:
  int coreHandle_;
  const wchar_t* feature_;
};
