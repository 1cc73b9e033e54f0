// SPDX-License-Identifier: MIT
// Finds the kind of a feature by asking, since the feature library does not report it.
#include "tools/CameraFeature.h"

#include "tools/KnownFeatures.h"
#include "tools/Messages.h"
#include "tools/NearestWord.h"
#include "tools/TFeatureDevice.h"
#include "utility/utf8.h"

#include <algorithm>
#include <charconv>
#include <cmath>

// A feature library need not have it: the library above it does without.
#pragma weak VX_SetString

namespace vxtool {

namespace {

constexpr int kTextLength = 256;
constexpr int kMaxTextLength = 1 << 20;

// The functions of the feature library that read and write a kind of feature.
struct TFunctions
{
  const char* read;
  const char* write;
};

TFunctions FunctionsOf(FeatureKind kind)
{
  switch (kind) {
  case FeatureKind::Enumerated:
    return {"VX_GetEnumerated", "VX_SetEnumeratedString"};
  case FeatureKind::Integer:
    return {"VX_GetInt", "VX_SetInt"};
  case FeatureKind::Float:
    return {"VX_GetFloat", "VX_SetFloat"};
  case FeatureKind::Boolean:
    return {"VX_GetBool", "VX_SetBool"};
  case FeatureKind::String:
    return {"VX_GetString", "VX_SetString"};
  case FeatureKind::Command:
    break;
  }
  return {"", ""};
}

int ReadText(int handle, const wchar_t* name, TFeatureValue& value)
{
  int length = 0;
  if (const int code = VX_GetStringMaxLength(handle, name, &length); code != VX_SUCCESS) return code;
  std::wstring text(static_cast<std::size_t>(std::clamp(length, 1, kMaxTextLength)), L'\0');
  const int code = VX_GetString(handle, name, text.data(), static_cast<int>(text.size()));
  if (code == VX_SUCCESS) value = ToUtf8(text.substr(0, text.find(L'\0')));
  return code;
}

std::string WordAt(int handle, const wchar_t* name, int index)
{
  std::wstring text(kTextLength, L'\0');
  if (VX_GetEnumeratedString(handle, name, index, text.data(), kTextLength) != VX_SUCCESS) return "";
  return ToUtf8(text.substr(0, text.find(L'\0')));
}

int ReadWord(int handle, const wchar_t* name, TFeatureValue& value)
{
  int index = 0;
  const int code = VX_GetEnumerated(handle, name, &index);
  if (code == VX_SUCCESS) value = WordAt(handle, name, index);
  return code;
}

template <typename Number>
int ReadNumber(int handle, const wchar_t* name, int (*read)(int, const wchar_t*, Number*), TFeatureValue& value)
{
  Number number = 0;
  const int code = read(handle, name, &number);
  if (code == VX_SUCCESS) value = number;
  return code;
}

int ReadSwitch(int handle, const wchar_t* name, TFeatureValue& value)
{
  int isOn = 0;
  const int code = VX_GetBool(handle, name, &isOn);
  if (code == VX_SUCCESS) value = isOn != 0;
  return code;
}

int ReadAs(FeatureKind kind, int handle, const wchar_t* name, TFeatureValue& value)
{
  switch (kind) {
  case FeatureKind::Enumerated:
    return ReadWord(handle, name, value);
  case FeatureKind::Integer:
    return ReadNumber(handle, name, VX_GetInt, value);
  case FeatureKind::Float:
    return ReadNumber(handle, name, VX_GetFloat, value);
  case FeatureKind::Boolean:
    return ReadSwitch(handle, name, value);
  case FeatureKind::String:
    return ReadText(handle, name, value);
  case FeatureKind::Command:
    break;
  }
  return VX_SUCCESS;
}

// The kind that can be read; else the one whose reading fails for another reason than its kind.
void FindKind(int handle, const wchar_t* name, TCameraFeature& feature)
{
  for (const FeatureKind kind : {FeatureKind::Enumerated, FeatureKind::Integer, FeatureKind::Float,
                                 FeatureKind::Boolean, FeatureKind::String}) {
    const int code = ReadAs(kind, handle, name, feature.value);
    if (code == VX_SUCCESS) {
      feature.kind = kind;
      feature.whyNotRead.clear();
      return;
    }
    if (code == VX_ERR_WRONG_KIND || code == VX_ERR_NOT_IMPLEMENTED || !feature.whyNotRead.empty()) continue;
    feature.kind = kind;
    feature.whyNotRead = FeatureCodeText(FunctionsOf(kind).read, code);
  }
}

void ReadWords(int handle, const wchar_t* name, std::vector<TFeatureWord>& words)
{
  int count = 0;
  if (VX_GetEnumeratedCount(handle, name, &count) != VX_SUCCESS) return;
  for (int index = 0; index < count; ++index) {
    int isImplemented = 1;
    int isAvailable = 0;
    VX_IsEnumIndexImplemented(handle, name, index, &isImplemented);
    VX_IsEnumeratedIndexAvailable(handle, name, index, &isAvailable);
    if (isImplemented != 0) words.push_back({WordAt(handle, name, index), isAvailable != 0});
  }
}

// A `VX_` code.
int FindOut(int handle, const std::string& name, bool& isImplemented)
{
  int flag = 0;
  const int code = VX_IsImplemented(handle, FromUtf8(name).c_str(), &flag);
  isImplemented = code == VX_SUCCESS && flag == 1;
  return code;
}

bool IsImplemented(int handle, const std::string& name)
{
  bool isImplemented = false;
  return FindOut(handle, name, isImplemented) == VX_SUCCESS && isImplemented;
}

// What the feature takes now.
std::string AcceptedText(const TCameraFeature& feature)
{
  switch (feature.kind) {
  case FeatureKind::Enumerated: {
    std::vector<std::string> words;
    for (const TFeatureWord& word : feature.words)
      if (word.isAvailable) words.push_back(word.text);
    return ChoiceText(words) + " is";
  }
  case FeatureKind::Integer:
  case FeatureKind::Float: {
    const char* const what = feature.kind == FeatureKind::Integer ? "a whole number" : "a number";
    const std::string minimum = FeatureValueText(feature.minimum);
    const std::string maximum = FeatureValueText(feature.maximum);
    if (minimum.empty() || maximum.empty()) return std::string(what) + " is";
    return std::string(what) + " from " + minimum + " to " + maximum + " is, under the present settings";
  }
  case FeatureKind::Boolean:
    return "on or off is";
  default:
    return "a text is";
  }
}

template <typename Number>
bool Parse(const std::string& text, Number& number)
{
  const char* const end = text.data() + text.size();
  const auto [rest, error] = std::from_chars(text.data(), end, number);
  return error == std::errc{} && rest == end;
}

bool ParseSwitch(const std::string& text, bool& isOn)
{
  isOn = text == "on" || text == "true" || text == "1";
  return isOn || text == "off" || text == "false" || text == "0";
}

// A `VX_` code, or nothing when the text is no value of the feature's kind.
std::optional<int> Write(int handle, const wchar_t* name, const TCameraFeature& feature, const std::string& text)
{
  switch (feature.kind) {
  case FeatureKind::Enumerated: {
    const auto isMeant = [&text](const TFeatureWord& word) { return word.text == text; };
    if (std::none_of(feature.words.begin(), feature.words.end(), isMeant)) return std::nullopt;
    return VX_SetEnumeratedString(handle, name, FromUtf8(text).c_str());
  }
  case FeatureKind::Integer: {
    long long number = 0;
    return Parse(text, number) ? std::optional(VX_SetInt(handle, name, number)) : std::nullopt;
  }
  case FeatureKind::Float: {
    double number = 0.0;
    const bool isNumber = Parse(text, number) && std::isfinite(number);
    return isNumber ? std::optional(VX_SetFloat(handle, name, number)) : std::nullopt;
  }
  case FeatureKind::Boolean: {
    bool isOn = false;
    return ParseSwitch(text, isOn) ? std::optional(VX_SetBool(handle, name, isOn ? 1 : 0)) : std::nullopt;
  }
  default:
    return VX_SetString ? VX_SetString(handle, name, FromUtf8(text).c_str()) : VX_ERR_NOT_WRITABLE;
  }
}

// Why a value was refused: it is none of the feature's values, or not now.
std::string RefusalText(const TCameraFeature& feature, const std::string& value, std::optional<int> code)
{
  const int answered = code.value_or(VX_ERR_OUT_OF_RANGE);
  std::string answer = FeatureCodeText(FunctionsOf(feature.kind).write, answered);
  if (answered == VX_ERR_NOT_WRITABLE || answered == VX_ERR_NOT_AVAILABLE || answered == VX_ERR_COMMUNICATION)
    return answer;
  std::string text = RefusedText(value, AcceptedText(feature));
  const bool isOutside = answered == VX_ERR_OUT_OF_RANGE || answered == VX_ERR_STRING_NOT_AVAILABLE;
  for (const TFeatureWord& word : feature.words)
    if (word.text == value && !word.isAvailable) return text + "; it is not available under the present settings";
  std::vector<std::string> words;
  for (const TFeatureWord& word : feature.words) words.push_back(word.text);
  const std::string nearest = NearestWord(value, words);
  if (!nearest.empty()) text += "; the nearest is " + nearest;
  return isOutside ? text : text + "; " + answer;
}

} // namespace

bool ReadFeature(int handle, const std::string& name, TCameraFeature& feature)
{
  feature = {};
  feature.name = name;
  if (!IsImplemented(handle, name)) return false;
  const std::wstring wide = FromUtf8(name);
  int flag = 0;
  feature.isWritable = VX_IsWritable(handle, wide.c_str(), &flag) == VX_SUCCESS && flag == 1;
  FindKind(handle, wide.c_str(), feature);
  if (feature.kind == FeatureKind::Enumerated) ReadWords(handle, wide.c_str(), feature.words);
  if (feature.kind == FeatureKind::Integer) {
    ReadNumber(handle, wide.c_str(), VX_GetIntMin, feature.minimum);
    ReadNumber(handle, wide.c_str(), VX_GetIntMax, feature.maximum);
  }
  if (feature.kind == FeatureKind::Float) {
    ReadNumber(handle, wide.c_str(), VX_GetFloatMin, feature.minimum);
    ReadNumber(handle, wide.c_str(), VX_GetFloatMax, feature.maximum);
  }
  return true;
}

std::optional<std::string> FeatureText(int handle, const std::string& name)
{
  TCameraFeature read;
  if (!ReadFeature(handle, name, read) || !read.whyNotRead.empty()) return std::nullopt;
  const std::string text = FeatureValueText(read.value);
  return text.empty() ? std::nullopt : std::optional(text);
}

std::string SetFeature(int handle, const TFeatureSetting& setting, TCameraFeature& feature)
{
  if (!ReadFeature(handle, setting.name, feature)) return NoFeatureText(handle, setting.name);
  if (feature.kind == FeatureKind::Command) return "it is a command, which has no value";
  const std::optional<int> code = Write(handle, FromUtf8(setting.name).c_str(), feature, setting.value);
  if (code != VX_SUCCESS) return RefusalText(feature, setting.value, code);
  ReadFeature(handle, setting.name, feature);
  return "";
}

std::string FeatureValueText(const TFeatureValue& value)
{
  if (const auto* isOn = std::get_if<bool>(&value)) return *isOn ? "on" : "off";
  if (const auto* text = std::get_if<std::string>(&value)) return *text;
  char digits[32] = "";
  if (const auto* integer = std::get_if<long long>(&value))
    return {digits, std::to_chars(digits, digits + sizeof digits, *integer).ptr};
  if (const auto* number = std::get_if<double>(&value))
    return {digits, std::to_chars(digits, digits + sizeof digits, *number).ptr};
  return "";
}

std::string NoFeatureText(int handle, const std::string& name)
{
  bool isImplemented = false;
  if (const int code = FindOut(handle, name, isImplemented); code != VX_SUCCESS)
    return FeatureCodeText("VX_IsImplemented", code);
  std::vector<std::string> names;
  for (const TKnownFeature& known : KnownFeatures())
    if (IsImplemented(handle, known.name)) names.emplace_back(known.name);
  const std::string nearest = NearestWord(name, names);
  return "this camera has no such feature; " +
         (nearest.empty() ? "vxmcd get lists its features" : "the nearest is " + nearest);
}

} // namespace vxtool
