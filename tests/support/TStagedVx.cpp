// SPDX-License-Identifier: MIT
// A device that exists only as answers.
#include "tests/support/TStagedVx.h"

#include "vxcore.h"

#include <cwchar>

TStagedVx& TStagedVx::Instance()
{
  static TStagedVx instance;
  return instance;
}

int TStagedVx::Call(const std::string& call)
{
  calls.push_back(call);
  for (const auto& [beginning, code] : codes)
    if (call.rfind(beginning, 0) == 0) return code;
  return VX_SUCCESS;
}

namespace {

std::string Narrow(const wchar_t* text)
{
  return std::string(text, text + std::wcslen(text));
}

bool EndsWith(const std::string& text, const std::string& end)
{
  return text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

int Query(const char* name, const wchar_t* feature, int* flag)
{
  TStagedVx& vx = TStagedVx::Instance();
  const int code = vx.Call(name + Narrow(feature));
  const auto entry = vx.flags.find(Narrow(feature));
  *flag = entry == vx.flags.end() ? 1 : entry->second;
  return code;
}

int ReadText(const char* name, const wchar_t* feature, int index, wchar_t* text, int length)
{
  TStagedVx& vx = TStagedVx::Instance();
  const int code = vx.Call(name + Narrow(feature) + " " + std::to_string(index));
  if (vx.fillsTexts)
    std::wmemset(text, L'x', static_cast<std::size_t>(length));
  else if (code == VX_SUCCESS)
    std::wcsncpy(text, vx.texts.at(static_cast<std::size_t>(index)).c_str(), static_cast<std::size_t>(length));
  return code;
}

int Count(const TStagedVx& vx)
{
  return vx.count.value_or(static_cast<int>(vx.texts.size()));
}

template <class T>
int Get(const std::string& call, T value, T* output)
{
  const int code = TStagedVx::Instance().Call(call);
  if (code == VX_SUCCESS) *output = value;
  return code;
}

} // namespace

int VX_IsImplemented(int, const wchar_t* feature, int* flag)
{
  return Query("IsImplemented ", feature, flag);
}

int VX_SetInt(int, const wchar_t* feature, long long value)
{
  TStagedVx& vx = TStagedVx::Instance();
  const std::string name = Narrow(feature);
  const int code = vx.Call("SetInt " + name + " " + std::to_string(value));
  if (code == VX_SUCCESS) vx.integers[name] = value;
  return code;
}

int VX_GetInt(int, const wchar_t* feature, long long* value)
{
  TStagedVx& vx = TStagedVx::Instance();
  const std::string name = Narrow(feature);
  const long long selector = vx.integers[name + "Selector"];
  const std::string suffix = EndsWith(name, "I2CByte") ? " " + std::to_string(selector) : "";
  const int code = vx.Call("GetInt " + name + suffix);
  if (code != VX_SUCCESS) return code;
  if (!suffix.empty())
    *value = vx.bytes.at(static_cast<std::size_t>(selector));
  else if (name == "RegisterValue")
    *value = vx.registers[vx.integers["RegisterAddress"] + vx.integers["RegisterIndex"]];
  else
    *value = vx.integers[name];
  return code;
}

int VX_Command(int, const wchar_t* feature)
{
  return TStagedVx::Instance().Call("Command " + Narrow(feature));
}

int VX_GetEnumeratedCount(int, const wchar_t* feature, int* count)
{
  return Get("GetEnumeratedCount " + Narrow(feature), Count(TStagedVx::Instance()), count);
}

int VX_GetEnumeratedString(int, const wchar_t* feature, int index, wchar_t* text, int length)
{
  return ReadText("GetEnumeratedString ", feature, index, text, length);
}

int VX_GetEnumStringByIndex(int, const wchar_t* feature, int index, wchar_t* text, int length)
{
  return ReadText("GetEnumStringByIndex ", feature, index, text, length);
}

int VX_IsEnumIndexAvailable(int, const wchar_t* feature, int, int* flag)
{
  return Query("IsEnumIndexAvailable ", feature, flag);
}

int VX_GetStringMaxLength(int, const wchar_t* feature, int* length)
{
  return Get("GetStringMaxLength " + Narrow(feature), TStagedVx::Instance().maxLength, length);
}

int VX_GetString(int, const wchar_t* feature, wchar_t* text, int length)
{
  TStagedVx& vx = TStagedVx::Instance();
  const int code = vx.Call("GetString " + Narrow(feature) + " " + std::to_string(length));
  if (code != VX_SUCCESS) return code;
  const std::string& value = vx.strings[Narrow(feature)];
  std::wmemset(text, L'\0', static_cast<std::size_t>(length));
  for (std::size_t i = 0; i < value.size() && i < static_cast<std::size_t>(length); ++i)
    text[i] = static_cast<unsigned char>(value[i]);
  return code;
}
