// SPDX-License-Identifier: MIT
// Opening and closing, the meaning of codes, and texts of the feature library.
#include "tools/TFeatureDevice.h"

#include <algorithm>

namespace vxtool {

namespace {

constexpr char32_t kNoCharacter = 0xFFFD;
constexpr char32_t kHighestCharacter = 0x10FFFF;

struct TMeaning
{
  int code;
  const char* text;
};

constexpr TMeaning kMeanings[] = {
#define VX_CODE(name, meaning) {name, meaning},
#include "vxcore/result_codes.def"
};

bool IsCharacter(char32_t value)
{
  return value <= kHighestCharacter && (value < 0xD800 || value > 0xDFFF);
}

void Append(std::string& text, char32_t character)
{
  const auto tail = [&](int shift) { text += static_cast<char>(0x80 | (character >> shift & 0x3F)); };
  if (character < 0x80) {
    text += static_cast<char>(character);
  } else if (character < 0x800) {
    text += static_cast<char>(0xC0 | character >> 6);
    tail(0);
  } else if (character < 0x10000) {
    text += static_cast<char>(0xE0 | character >> 12);
    tail(6);
    tail(0);
  } else {
    text += static_cast<char>(0xF0 | character >> 18);
    tail(12);
    tail(6);
    tail(0);
  }
}

} // namespace

TFeatureDevice::~TFeatureDevice()
{
  if (handle_ != VX_HANDLE_NONE) VX_Close(handle_);
  if (isInitialised_) VX_FinaliseLibrary();
}

int TFeatureDevice::Open(int index)
{
  if (const int code = VX_InitialiseLibrary(); code != VX_SUCCESS) return code;
  isInitialised_ = true;
  const int code = VX_Open(index, &handle_);
  if (code != VX_SUCCESS) handle_ = VX_HANDLE_NONE;
  return code;
}

std::string FeatureCodeText(const std::string& function, int code)
{
  std::string text = function + ": " + std::to_string(code);
  for (const TMeaning& meaning : kMeanings)
    if (meaning.code == code) return text + ": " + meaning.text;
  return text;
}

std::string Utf8Of(const std::wstring& text)
{
  std::string narrow;
  for (const wchar_t letter : text) {
    const auto character = static_cast<char32_t>(letter);
    Append(narrow, IsCharacter(character) ? character : kNoCharacter);
  }
  return narrow;
}

std::wstring WideOf(const std::string& text)
{
  std::wstring wide;
  for (std::size_t next = 0; next < text.size();) {
    const auto lead = static_cast<unsigned char>(text[next]);
    const std::size_t length = lead < 0x80 ? 1 : lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : lead >= 0xC0 ? 2 : 0;
    char32_t character = length == 1 ? lead : length == 0 ? kNoCharacter : lead & (0xFFU >> (length + 1));
    for (std::size_t index = 1; index < length; ++index) {
      const unsigned char byte = next + index < text.size() ? static_cast<unsigned char>(text[next + index]) : 0;
      character =
          (byte & 0xC0) == 0x80 && character != kNoCharacter ? character << 6 | (byte & 0x3F) : kNoCharacter;
    }
    wide += static_cast<wchar_t>(IsCharacter(character) ? character : kNoCharacter);
    next += std::max<std::size_t>(length, 1);
  }
  return wide;
}

} // namespace vxtool
