// SPDX-License-Identifier: MIT
// An integer feature of an open device.
#pragma once

#include "features/IInt.h"

/// IInt over one feature of one open device; the library's 64-bit values are narrowed to `int`. Observers are told
/// after every successful write, on the writing thread. Owned by its camera's record; the feature name is borrowed
/// and must be a constant.
class SDK3Int final : public IInt
{
public:
  SDK3Int(int coreHandle, const wchar_t* feature) : coreHandle_(coreHandle), feature_(feature) {}

  int SetInt(int value) override;
  int GetInt(int& value) override;

private:
  int coreHandle_;
  const wchar_t* feature_;
};
