// SPDX-License-Identifier: MIT
// The classic entry points for profile files.
#include "ini/private_profile.h"

#include "ini/profile_search.h"
#include "ini/regular_file.h"
#include "ini/TProfileNameList.h"
#include "utility/TQuorinMisc.h"
#include "utility/TUnusedCall.h"

#include <cstdlib>
#include <cstring>

using QuorinUtility::TQuorinMisc;

namespace {

bool FindValue(std::FILE* stream, const char* section, const char* key, TProfileText& value)
{
  return SearchForSection(stream, section) == kProfileFound && SearchForKey(stream, key) == kProfileFound &&
         ReadValue(stream, value);
}

unsigned int ListSections(std::FILE* stream, char* buffer, unsigned int size)
{
  TProfileNameList list(buffer, size);
  TProfileText name;
  while (NextSection(stream, name) && list.Add(name.Text())) {
  }
  return list.Finish();
}

// Starts after a section's header.
unsigned int ListKeys(std::FILE* stream, char* buffer, unsigned int size)
{
  TProfileNameList list(buffer, size);
  TProfileText name;
  do {
    SkipLine(stream);
  } while (MoveToNextKey(stream) == kProfileFound && ReadKeyName(stream, name) && list.Add(name.Text()));
  return list.Finish();
}

unsigned int CopyValue(const char* value, char* buffer, unsigned int size)
{
  return static_cast<unsigned int>(std::strlen(TQuorinMisc::strncpy(buffer, value, size)));
}

// Ignores the size, which callers rely on, and returns 0. Some pass one array as buffer and default.
unsigned int CopyDefault(const char* defaultValue, char* buffer)
{
  std::memmove(buffer, defaultValue, std::strlen(defaultValue) + 1);
  return 0;
}

} // namespace

namespace EntryPoint {

unsigned int GetPrivateProfileInt(const char* section, const char* key, int defaultValue, const char* fileName)
{
  if (!section || !key || !fileName) return 0;
  const TOpenFile file = OpenRegularFile(fileName);
  TProfileText value;
  if (!file || !FindValue(file.get(), section, key, value)) return static_cast<unsigned int>(defaultValue);
  return static_cast<unsigned int>(std::strtol(value.Text(), nullptr, 0));
}

unsigned int GetPrivateProfileString(const char* section, const char* key, const char* defaultValue, char* buffer,
                                     unsigned int size, const char* fileName)
{
  if (!defaultValue || !buffer || !fileName || size < 2) return 0;
  const TOpenFile file = OpenRegularFile(fileName);
  if (!file) return CopyDefault(defaultValue, buffer);
  if (!section) return ListSections(file.get(), buffer, size);
  if (!key) {
    if (SearchForSection(file.get(), section) != kProfileFound) return CopyDefault(defaultValue, buffer);
    return ListKeys(file.get(), buffer, size);
  }
  TProfileText value;
  if (!FindValue(file.get(), section, key, value)) return CopyDefault(defaultValue, buffer);
  return CopyValue(value.Text(), buffer, size);
}

unsigned int WritePrivateProfileString(const char*, const char*, const char*, const char*)
{
  static constinit TUnusedCall call(__func__, "0", "the library writes no profile files");
  call.Note();
  return 0;
}

} // namespace EntryPoint
