// SPDX-License-Identifier: MIT
// One feature of an open device, by its kind.
#include "features/SDK3Features.h"

#include "vxcore.h"

namespace {

constexpr int kTextLength = 100;

} // namespace

int SDK3Bool::SetBool(bool value)
{
  return VX_SetBool(coreHandle_, feature_, value ? 1 : 0);
}

int SDK3Bool::GetBool(bool& value)
{
  int flag = value ? 1 : 0;
  const int code = VX_GetBool(coreHandle_, feature_, &flag);
  value = flag != 0;
  return code;
}

int SDK3Int::SetInt(int value)
{
  const int code = VX_SetInt(coreHandle_, feature_, value);
  if (code == VX_SUCCESS) NotifyObservers();
  return code;
}

int SDK3Int::GetInt(int& value)
{
  long long wide = value;
  const int code = VX_GetInt(coreHandle_, feature_, &wide);
  value = static_cast<int>(wide);
  return code;
}

int SDK3Enum::SetIndex(int index)
{
  return VX_SetEnumIndex(coreHandle_, feature_, index);
}

int SDK3Enum::SetString(std::wstring value)
{
  return VX_SetEnumString(coreHandle_, feature_, value.c_str());
}

int SDK3Enum::GetIndex(int& index)
{
  return VX_GetEnumIndex(coreHandle_, feature_, &index);
}

int SDK3Enum::GetCount(int& count)
{
  return VX_GetEnumCount(coreHandle_, feature_, &count);
}

int SDK3Enum::GetString(std::wstring& value)
{
  IEnum& self = *this;
  int index = 0;
  if (const int code = self.GetIndex(index); code != VX_SUCCESS) return code;
  return self.GetStringByIndex(index, value);
}

int SDK3Enum::IsIndexAvailable(int index, bool& available)
{
  int flag = 0;
  const int code = VX_IsEnumIndexAvailable(coreHandle_, feature_, index, &flag);
  available = flag != 0;
  return code;
}

int SDK3Enum::IsIndexImplemented(int index, bool& implemented)
{
  int flag = 0;
  const int code = VX_IsEnumIndexImplemented(coreHandle_, feature_, index, &flag);
  implemented = flag != 0;
  return code;
}

int SDK3Enum::GetStringByIndex(int index, std::wstring& value)
{
  wchar_t text[kTextLength] = {};
  const int code = VX_GetEnumStringByIndex(coreHandle_, feature_, index, text, kTextLength);
  text[kTextLength - 1] = L'\0';
  value = text;
  return code;
}
