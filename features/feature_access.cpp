// SPDX-License-Identifier: MIT
// Reading and writing features of an open device.
#include "features/feature_access.h"

#include "features/current_core_handle.h"
#include "features/TValueText.h"
#include "vxmcd_result_codes.h"

#include <algorithm>
#include <vector>

namespace {

constexpr std::int64_t kMaxStringLength = 4096;

bool IsEnumeratedIndexAvailable(const wchar_t* feature, int index)
{
  int flag = 0;
  return VX_IsEnumeratedIndexAvailable(CurrentCoreHandle(), feature, index, &flag) == VX_SUCCESS && flag == 1;
}

} // namespace

bool isImplemented(int coreHandle, const wchar_t* feature)
{
  int flag = 0;
  if (ReadImplemented(coreHandle, feature, flag) != VX_SUCCESS) return false;
  if (flag != 1) NoteMissing(feature);
  return flag == 1;
}

bool IsWritable(int coreHandle, const wchar_t* feature)
{
  int flag = 0;
  return Noted(VX_IsWritable(coreHandle, feature, &flag), NoteRead, feature) == VX_SUCCESS && flag == 1;
}

int GetEnumeratedIndexFromString(const wchar_t* feature, const wchar_t* value)
{
  int count = -1;
  if (ReadValueCount(CurrentCoreHandle(), feature, count) != VX_SUCCESS) return -1;

  for (int index = 0; index < count; ++index) {
    TValueText text;
    if (text.Read(CurrentCoreHandle(), feature, index) != VX_SUCCESS) return -1;
    if (text.Is(value)) return index;
  }
  return -1;
}

unsigned int CheckSetEnumeratedIndex(const wchar_t* feature, const wchar_t* value, unsigned int failCode)
{
  const int index = GetEnumeratedIndexFromString(feature, value);
  if (index < 0 || !IsEnumeratedIndexAvailable(feature, index)) {
    NoteNotOffered(CurrentCoreHandle(), feature, value);
    return failCode;
  }
  WriteText(CurrentCoreHandle(), feature, value);
  return RC_SUCCESS;
}

int ReadString(int coreHandle, const wchar_t* feature, std::int64_t length, std::wstring& text)
{
  text.clear();
  const std::int64_t bounded = std::clamp<std::int64_t>(length, 1, kMaxStringLength);
  // One more than is offered: a library that fills its whole buffer loses nothing.
  std::vector<wchar_t> buffer(static_cast<std::size_t>(bounded) + 1, L'\0');
  const int code =
      Noted(VX_GetString(coreHandle, feature, buffer.data(), static_cast<int>(bounded)), NoteRead, feature);
  buffer.back() = L'\0';
  if (code == VX_SUCCESS) text = buffer.data();
  return code;
}
