// SPDX-License-Identifier: MIT
// One feature of an open device, by its kind.
#pragma once

#include "features/feature_interfaces.h"
#include "features/feature_names.h"

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

/// IInt over one feature of one open device; the library's 64-bit values are narrowed to `int`. Observers are notified
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

/// "PixelReadoutRate", passed through unchanged. Owned by its camera's record. As thread-safe as the feature
/// library.
class TPixelReadoutRate final : public SDK3Enum
{
public:
  explicit TPixelReadoutRate(int coreHandle) : SDK3Enum(coreHandle, Feature::kPixelReadoutRate) {}
};
