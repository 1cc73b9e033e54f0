// SPDX-License-Identifier: MIT
// Typed reading of profile files.
#pragma once

#include <climits>

/// Typed reading of profile files over GetPrivateProfileInt() and GetPrivateProfileString(). Every call reads the
/// file again and stores nothing. Thread-safe; throws nothing and reports no errors: a missing value has its
/// default.
class TIniFileParser final
{
public:
  TIniFileParser() = delete;

  /// Size of the buffers that values and lists of sections are read into.
  static constexpr unsigned int MAX_SIZE_CHAR_ARRAY = 65536;

  /// Copies the value, "0" by default, into @p buffer, which has room for 65535 characters. Returns its length, 0
  /// for the default.
  static unsigned int GetStringFromSection(const char* file, const char* section, const char* key, char* buffer);

  /// The number that the value begins with; 0 by default.
  static float GetFloatFromSection(const char* file, const char* section, const char* key);

  /// Decimal, hexadecimal after "0x" or octal after "0"; 0 by default.
  static int GetIntFromSection(const char* file, const char* section, const char* key);

  /// Hexadecimal with or without "0x"; 0 by default.
  static unsigned int GetIntHexFromSection(const char* file, const char* section, const char* key);

  /// The same with @p defaultText instead of a missing value.
  static unsigned int GetIntHexFromSectionDefault(const char* file, const char* section, const char* key,
                                                  const char* defaultText);

  /// The number of sections *without the last one*: 1 for a file of two. Potentiometer files are made for this.
  static int GetNumberOfSections(const char* file);

  /// Copies the names of the sections that GetNumberOfSections() counts into @p names, buffers of 512 bytes each,
  /// and returns their number. There are at most @p room buffers: the file may have grown since they were made.
  static int GetSections(const char* file, char** names, int room = INT_MAX);
};
