// SPDX-License-Identifier: MIT
// Answers of the feature library that a test sets as it likes.
#include "TScriptedVx.h"

#include "vxcore.h"

#include <cwchar>

TScriptedVx& TScriptedVx::Instance()
{
  static TScriptedVx instance;
  return instance;
}

namespace {

TScriptedVx& Vx(const char* function)
{
  TScriptedVx& vx = TScriptedVx::Instance();
  vx.calls.emplace_back(function);
  return vx;
}

int ReadText(TScriptedVx& vx, int index, wchar_t* text, int length)
{
  if (vx.failsFromIndex >= 0 && index >= vx.failsFromIndex) return VX_ERR_NOT_READABLE;
  if (vx.unterminated) {
    std::wmemset(text, L'x', static_cast<std::size_t>(length));
    return vx.code;
  }
  if (vx.code == VX_SUCCESS)
    std::wcsncpy(text, vx.texts.at(static_cast<std::size_t>(index)).c_str(), static_cast<std::size_t>(length));
  return vx.code;
}

int Count(const TScriptedVx& vx)
{
  return vx.count == -2 ? static_cast<int>(vx.texts.size()) : vx.count;
}

int Answer(TScriptedVx& vx, int& output, int value)
{
  output = value;
  return vx.code;
}

} // namespace

int VX_IsImplemented(int, const wchar_t*, int* flag)
{
  TScriptedVx& vx = Vx("VX_IsImplemented");
  return Answer(vx, *flag, vx.flag);
}

int VX_GetEnumeratedCount(int, const wchar_t*, int* count)
{
  TScriptedVx& vx = Vx("VX_GetEnumeratedCount");
  return Answer(vx, *count, Count(vx));
}

int VX_GetEnumeratedString(int, const wchar_t*, int index, wchar_t* text, int length)
{
  return ReadText(Vx("VX_GetEnumeratedString"), index, text, length);
}

int VX_IsEnumeratedIndexAvailable(int, const wchar_t*, int, int* flag)
{
  TScriptedVx& vx = Vx("VX_IsEnumeratedIndexAvailable");
  return Answer(vx, *flag, vx.flag);
}

int VX_SetEnumeratedString(int, const wchar_t*, const wchar_t*)
{
  Vx("VX_SetEnumeratedString");
  return VX_ERR_NOT_WRITABLE;
}

int VX_GetEnumIndex(int, const wchar_t*, int* index)
{
  TScriptedVx& vx = Vx("VX_GetEnumIndex");
  return Answer(vx, *index, vx.index);
}

int VX_GetEnumCount(int, const wchar_t*, int* count)
{
  TScriptedVx& vx = Vx("VX_GetEnumCount");
  return Answer(vx, *count, Count(vx));
}

int VX_GetEnumStringByIndex(int, const wchar_t*, int index, wchar_t* text, int length)
{
  return ReadText(Vx("VX_GetEnumStringByIndex"), index, text, length);
}

int VX_SetEnumIndex(int, const wchar_t*, int index)
{
  TScriptedVx& vx = Vx("VX_SetEnumIndex");
  vx.index = index;
  return vx.code;
}

int VX_SetEnumString(int, const wchar_t*, const wchar_t*)
{
  return Vx("VX_SetEnumString").code;
}

int VX_IsEnumIndexAvailable(int, const wchar_t*, int, int* flag)
{
  TScriptedVx& vx = Vx("VX_IsEnumIndexAvailable");
  return Answer(vx, *flag, vx.flag);
}

int VX_IsEnumIndexImplemented(int, const wchar_t*, int, int* flag)
{
  TScriptedVx& vx = Vx("VX_IsEnumIndexImplemented");
  return Answer(vx, *flag, vx.flag);
}

int VX_GetInt(int, const wchar_t*, long long* value)
{
  TScriptedVx& vx = Vx("VX_GetInt");
  if (vx.code == VX_SUCCESS) *value = vx.integer;
  return vx.code;
}

int VX_SetInt(int, const wchar_t*, long long value)
{
  TScriptedVx& vx = Vx("VX_SetInt");
  if (vx.code == VX_SUCCESS) vx.integer = value;
  return vx.code;
}

int VX_GetBool(int, const wchar_t*, int* value)
{
  TScriptedVx& vx = Vx("VX_GetBool");
  if (vx.code == VX_SUCCESS) *value = vx.boolean;
  return vx.code;
}

int VX_SetBool(int, const wchar_t*, int value)
{
  TScriptedVx& vx = Vx("VX_SetBool");
  if (vx.code == VX_SUCCESS) vx.boolean = value;
  return vx.code;
}
