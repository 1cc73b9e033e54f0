// SPDX-License-Identifier: MIT
// Typed reading of profile files.
#include "ini/TIniFileParser.h"

#include "ini/private_profile.h"
#include "ini/text_double.h"
#include "utility/TQuorinMisc.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>

using QuorinUtility::TQuorinMisc;

namespace {

constexpr unsigned int kValueSize = TIniFileParser::MAX_SIZE_CHAR_ARRAY - 1;
constexpr std::size_t kNameSize = 512;
constexpr const char* kZeroText = "0";

/// A text of one call on the heap; empty at first, and always when there is no memory.
class TTextBuffer final
{
public:
  explicit TTextBuffer(std::size_t size) : text_(new (std::nothrow) char[size])
  {
    if (text_) text_[0] = '\0';
  }

  /// Null without memory; the profile functions write nothing then.
  char* Room() { return text_.get(); }
  const char* Text() const { return text_ ? text_.get() : ""; }

private:
  std::unique_ptr<char[]> text_;
};

/// The value, or the whole default.
TTextBuffer Value(const char* file, const char* section, const char* key, const char* defaultText)
{
  const std::size_t defaultSize = defaultText ? std::strlen(defaultText) + 1 : 0;
  TTextBuffer value(std::max<std::size_t>(TIniFileParser::MAX_SIZE_CHAR_ARRAY, defaultSize));
  EntryPoint::GetPrivateProfileString(section, key, defaultText, value.Room(), kValueSize, file);
  return value;
}

/// All sections and their count; the count is below 0 when there are none.
int ListSections(const char* file, TTextBuffer& list)
{
  const unsigned int size = TIniFileParser::MAX_SIZE_CHAR_ARRAY;
  return static_cast<int>(EntryPoint::GetPrivateProfileString(nullptr, nullptr, "", list.Room(), size, file));
}

} // namespace

unsigned int TIniFileParser::GetStringFromSection(const char* file, const char* section, const char* key,
                                                  char* buffer)
{
  return EntryPoint::GetPrivateProfileString(section, key, kZeroText, buffer, kValueSize, file);
}

float TIniFileParser::GetFloatFromSection(const char* file, const char* section, const char* key)
{
  return static_cast<float>(LeadingDouble(Value(file, section, key, kZeroText).Text()));
}

int TIniFileParser::GetIntFromSection(const char* file, const char* section, const char* key)
{
  return static_cast<int>(EntryPoint::GetPrivateProfileInt(section, key, 0, file));
}

unsigned int TIniFileParser::GetIntHexFromSection(const char* file, const char* section, const char* key)
{
  return GetIntHexFromSectionDefault(file, section, key, kZeroText);
}

unsigned int TIniFileParser::GetIntHexFromSectionDefault(const char* file, const char* section, const char* key,
                                                         const char* defaultText)
{
  return static_cast<unsigned int>(std::strtoul(Value(file, section, key, defaultText).Text(), nullptr, 16));
}

int TIniFileParser::GetNumberOfSections(const char* file)
{
  TTextBuffer list(MAX_SIZE_CHAR_ARRAY);
  const int count = ListSections(file, list);
  if (count > static_cast<int>(MAX_SIZE_CHAR_ARRAY)) return -1; // the list does not fit into our buffer
  if (count <= 0) return 0;
  return static_cast<int>(std::count(list.Text(), list.Text() + count, '\0'));
}

int TIniFileParser::GetSections(const char* file, char** names, int room)
{
  const int sections = std::min(GetNumberOfSections(file), room);
  if (sections < 1) return sections;
  TTextBuffer list(MAX_SIZE_CHAR_ARRAY);
  // The count of this second listing: if the file has shrunk meanwhile, the rest of the names are empty.
  const char* name = list.Text();
  const char* const end = name + std::max(ListSections(file, list), 0);
  for (int i = 0; i < sections; ++i) {
    TQuorinMisc::strncpy(names[i], name < end ? name : "", kNameSize);
    if (name < end) name += std::strlen(name) + 1;
  }
  return sections;
}
