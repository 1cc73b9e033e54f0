// SPDX-License-Identifier: MIT
// An enumerated feature of an open device.
#pragma once

#include "features/IEnum.h"

/// IEnum over one feature of one open device. Every operation is one call into the feature library, and its code
/// is returned unchanged. Owned by its camera's record; the feature name is borrowed and must be a constant. As
/// thread-safe as the feature library.
class SDK3Enum : public IEnum
{
public:
  SDK3Enum(int coreHandle, const wchar_t* feature) : coreHandle_(coreHandle), feature_(feature) {}

  int SetIndex(int index) override;
  int SetString(std::wstring value) override;
  int GetIndex(int& index) override;
  int GetCount(int& count) override;
  int GetString(std::wstring& value) override;
  int IsIndexAvailable(int index, bool& available) override;
  int IsIndexImplemented(int index, bool& implemented) override;
  /// A failed read gives an empty text.
  int GetStringByIndex(int index, std::wstring& value) override;

private:
  int coreHandle_;
  const wchar_t* feature_;
};
