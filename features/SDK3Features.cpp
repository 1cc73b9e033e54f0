// SPDX-License-Identifier: MIT
// One feature of an open device, by its kind.
#include "features/SDK3Features.h"

#include "features/refused_access.h"

namespace {

constexpr int kTextLength = 100;

} // namespace

int SDK3Bool::SetBool(bool value)
{
  return Noted(VX_SetBool(coreHandle_, feature_, value ? 1 : 0), NoteBool, feature_, value ? 1 : 0);
}

int SDK3Bool::GetBool(bool& value)
{
  int flag = value ? 1 : 0;
  const int code = Noted(VX_GetBool(coreHandle_, feature_, &flag), NoteRead, feature_);
  value = flag != 0;
  return code;
}

int SDK3Int::SetInt(int value)
{
  const int code = Noted(VX_SetInt(coreHandle_, feature_, value), NoteInt, coreHandle_, feature_, value);
  if (code == VX_SUCCESS) NotifyObservers();
  return code;
}

int SDK3Int::GetInt(int& value)
{
  long long wide = value;
  const int code = Noted(VX_GetInt(coreHandle_, feature_, &wide), NoteRead, feature_);
  value = static_cast<int>(wide);
  return code;
}

int SDK3Enum::SetIndex(int index)
{
  return Noted(VX_SetEnumIndex(coreHandle_, feature_, index), NoteIndex, coreHandle_, feature_, index);
}

int SDK3Enum::SetString(std::wstring value)
{
  return Noted(VX_SetEnumString(coreHandle_, feature_, value.c_str()), NoteText, coreHandle_, feature_,
               value.c_str());
}

int SDK3Enum::GetIndex(int& index)
{
  return Noted(VX_GetEnumIndex(coreHandle_, feature_, &index), NoteRead, feature_);
}

int SDK3Enum::GetCount(int& count)
{
  return Noted(VX_GetEnumCount(coreHandle_, feature_, &count), NoteRead, feature_);
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
  const int code = Noted(VX_IsEnumIndexAvailable(coreHandle_, feature_, index, &flag), NoteRead, feature_);
  available = flag != 0;
  return code;
}

int SDK3Enum::IsIndexImplemented(int index, bool& implemented)
{
  int flag = 0;
  const int code = Noted(VX_IsEnumIndexImplemented(coreHandle_, feature_, index, &flag), NoteRead, feature_);
  implemented = flag != 0;
  return code;
}

int SDK3Enum::GetStringByIndex(int index, std::wstring& value)
{
  wchar_t text[kTextLength] = {};
  const int code =
      Noted(VX_GetEnumStringByIndex(coreHandle_, feature_, index, text, kTextLength), NoteRead, feature_);
  text[kTextLength - 1] = L'\0';
  value = text;
  return code;
}
