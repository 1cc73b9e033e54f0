// SPDX-License-Identifier: MIT
// What the feature library refuses, in words, for the log.
#include "features/refused_access.h"

#include "utility/TBoundedText.h"

#include <algorithm>
#include <iterator>

namespace {

// The longest list of texts that is noted, and the longest text of a value.
constexpr int kMaxTexts = 32;
constexpr int kTextLength = 64;

using TWords = TBoundedText<512>;

constexpr struct
{
  int code;
  const char* name;
} kCodes[] = {
#define VX_CODE(name, meaning) {name, #name},
#include "vxcore/result_codes.def"
};

const char* NameOf(int code)
{
  const auto* const row =
      std::find_if(std::begin(kCodes), std::end(kCodes), [code](const auto& r) { return r.code == code; });
  return row == std::end(kCodes) ? "(unknown)" : row->name;
}

void NoteWrite(int code, const wchar_t* feature, const TWords& value, const TWords& accepted)
{
  if (code == VX_ERR_NOT_IMPLEMENTED)
    TCallNotes::AddFailure("the camera has no %ls, which was to become %s", feature, value.Data());
  else
    TCallNotes::AddFailure("the camera refused %ls %s with %d %s%s%s", feature, value.Data(), code, NameOf(code),
                           accepted.IsEmpty() ? "" : " and takes ", accepted.Data());
}

bool IsAboutTheValue(int code)
{
  return code == VX_ERR_OUT_OF_RANGE || code == VX_ERR_INDEX_NOT_AVAILABLE ||
         code == VX_ERR_INDEX_NOT_IMPLEMENTED || code == VX_ERR_STRING_NOT_AVAILABLE;
}

// The values that an enumerated feature takes now.
void AppendTexts(TWords& words, int coreHandle, const wchar_t* feature)
{
  int count = 0;
  if (VX_GetEnumeratedCount(coreHandle, feature, &count) != VX_SUCCESS) return;
  for (int index = 0; index < std::min(count, kMaxTexts); ++index) {
    int isAvailable = 0;
    wchar_t text[kTextLength] = {};
    if (VX_IsEnumeratedIndexAvailable(coreHandle, feature, index, &isAvailable) != VX_SUCCESS || isAvailable != 1)
      continue;
    if (VX_GetEnumeratedString(coreHandle, feature, index, text, kTextLength) != VX_SUCCESS) continue;
    words.Append("%s%d \"%ls\"", words.IsEmpty() ? "" : ", ", index, text);
  }
}

} // namespace

// What a camera does not have, or does not have now, explains a failure and is none by itself.
void NoteRead(int code, const wchar_t* feature) noexcept
{
  switch (code) {
  case VX_ERR_NOT_IMPLEMENTED:
    NoteMissing(feature);
    break;
  case VX_ERR_NOT_READABLE:
  case VX_ERR_NOT_AVAILABLE:
    TCallNotes::AddDetail("%ls cannot be read now: the camera answered %d %s", feature, code, NameOf(code));
    break;
  default:
    TCallNotes::AddFailure("%ls cannot be read: the camera answered %d %s", feature, code, NameOf(code));
  }
}

void NoteCommand(int code, const wchar_t* feature) noexcept
{
  TCallNotes::AddFailure("the camera refused the command %ls with %d %s", feature, code, NameOf(code));
}

void NoteInt(int code, int coreHandle, const wchar_t* feature, long long value) noexcept
{
  TWords asked;
  asked.Append("%lld", value);
  TWords accepted;
  long long minimum = 0;
  long long maximum = 0;
  if (code == VX_ERR_OUT_OF_RANGE && VX_GetIntMin(coreHandle, feature, &minimum) == VX_SUCCESS &&
      VX_GetIntMax(coreHandle, feature, &maximum) == VX_SUCCESS)
    accepted.Append("%lld to %lld", minimum, maximum);
  NoteWrite(code, feature, asked, accepted);
}

void NoteFloat(int code, int coreHandle, const wchar_t* feature, double value) noexcept
{
  TWords asked;
  asked.Append("%.7g", value);
  TWords accepted;
  double minimum = 0.0;
  double maximum = 0.0;
  if (code == VX_ERR_OUT_OF_RANGE && VX_GetFloatMin(coreHandle, feature, &minimum) == VX_SUCCESS &&
      VX_GetFloatMax(coreHandle, feature, &maximum) == VX_SUCCESS)
    accepted.Append("%.7g to %.7g", minimum, maximum);
  NoteWrite(code, feature, asked, accepted);
}

void NoteBool(int code, const wchar_t* feature, int on) noexcept
{
  TWords asked;
  asked.Append("%d", on);
  TWords accepted;
  if (code == VX_ERR_OUT_OF_RANGE) accepted.Append("0 and 1");
  NoteWrite(code, feature, asked, accepted);
}

void NoteIndex(int code, int coreHandle, const wchar_t* feature, int index) noexcept
{
  TWords asked;
  asked.Append("%d", index);
  TWords accepted;
  if (IsAboutTheValue(code)) AppendTexts(accepted, coreHandle, feature);
  NoteWrite(code, feature, asked, accepted);
}

void NoteText(int code, int coreHandle, const wchar_t* feature, const wchar_t* text) noexcept
{
  TWords asked;
  asked.Append("\"%ls\"", text);
  TWords accepted;
  if (IsAboutTheValue(code)) AppendTexts(accepted, coreHandle, feature);
  NoteWrite(code, feature, asked, accepted);
}

void NoteMissing(const wchar_t* feature) noexcept
{
  TCallNotes::AddDetail("the camera has no %ls", feature);
}

void NoteNotOffered(int coreHandle, const wchar_t* feature, const wchar_t* text) noexcept
{
  if (!TCallNotes::AreKept()) return;
  TWords accepted;
  AppendTexts(accepted, coreHandle, feature);
  TCallNotes::AddDetail("the camera does not take %ls \"%ls\" now but %s", feature, text,
                        accepted.IsEmpty() ? "nothing" : accepted.Data());
}

bool IsIndexOf(int count, int index, const char* what) noexcept
{
  if (index >= 0 && index < count) return true;
  if (count > 0)
    TCallNotes::AddDetail("there is no %s %d; they are 0 to %d", what, index, count - 1);
  else
    TCallNotes::AddDetail("there is no %s", what);
  return false;
}
