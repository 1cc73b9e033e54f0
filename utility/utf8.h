// SPDX-License-Identifier: MIT
// UTF-8 and wide characters, in every locale. Part of each library and program that needs it, so it has no source file.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace utf8 {

inline constexpr char32_t kNoCharacter = 0xFFFD; ///< stands for what is no character
inline constexpr unsigned char kTailMask = 0x3F; ///< bits of a character in each byte behind the first

constexpr bool IsCharacter(char32_t value)
{
  return value <= 0x10FFFF && (value < 0xD800 || value > 0xDFFF);
}

/// Bytes that a character takes.
constexpr std::size_t LengthOf(char32_t character)
{
  return character < 0x80 ? 1 : character < 0x800 ? 2 : character < 0x10000 ? 3 : 4;
}

} // namespace utf8

/// Wide characters as UTF-8; what is no character becomes U+FFFD.
inline std::string ToUtf8(std::wstring_view text)
{
  constexpr unsigned char kFirst[] = {0, 0, 0xC0, 0xE0, 0xF0}; // by length
  std::string bytes;
  for (const wchar_t letter : text) {
    auto character = static_cast<char32_t>(letter);
    if (!utf8::IsCharacter(character)) character = utf8::kNoCharacter;
    const std::size_t length = utf8::LengthOf(character);
    bytes += static_cast<char>(kFirst[length] | character >> 6 * (length - 1));
    for (std::size_t left = length - 1; left-- > 0;)
      bytes += static_cast<char>(0x80 | (character >> 6 * left & utf8::kTailMask));
  }
  return bytes;
}

/// UTF-8 as wide characters. A byte that is not part of a character becomes '?', which every locale can print.
inline std::wstring FromUtf8(std::string_view bytes)
{
  std::wstring text;
  while (!bytes.empty()) {
    const auto first = static_cast<unsigned char>(bytes[0]);
    const std::size_t length = first < 0x80 ? 1 : first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : first >= 0xC0 ? 2 : 0;
    char32_t character = length == 1 ? first : first & 0xFFU >> (length + 1);
    bool isGood = length != 0 && length <= bytes.size() && first < 0xF8;
    for (std::size_t index = 1; isGood && index < length; ++index) {
      const auto byte = static_cast<unsigned char>(bytes[index]);
      isGood = (byte & ~utf8::kTailMask) == 0x80;
      character = character << 6 | (byte & utf8::kTailMask);
    }
    isGood = isGood && utf8::IsCharacter(character) && utf8::LengthOf(character) == length;
    text += isGood ? static_cast<wchar_t>(character) : L'?';
    bytes.remove_prefix(isGood ? length : 1);
  }
  return text;
}
