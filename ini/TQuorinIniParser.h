// SPDX-License-Identifier: MIT
// An INI document that is read, changed and saved as a whole.
#pragma once

#include <memory>
#include <string>

namespace QuorinUtility {

/// An INI document in memory: sections and keys without regard to case, each key once, one line a value, UTF-8. It
/// counts as loaded as soon as it has a section. Reentrant. Operations throw nothing and report by the codes
/// below; output parameters keep their values on failure. What is written is stored as it is: names and values
/// that do not fit into an INI line (line breaks, spaces at either end) read back from the document, but not from the
/// file that it was saved to.
class TQuorinIniParser final
{
public:
  enum : unsigned int
  {
    INI_OK = 0,
    INI_FAILED = 1, // file not opened, read or written, no memory, number too long, no output buffer
    INI_NOT_LOADED = 2,
    INI_ALREADY_LOADED = 3,
    INI_NO_SUCH_KEY = 4,
    INI_NO_VALUE = 5,
    INI_NULL_FILE_NAME = 6,
    INI_NULL_SECTION = 7,
    INI_NULL_KEY = 8,
    INI_NULL_VALUE = 9,
  };

  TQuorinIniParser();
  ~TQuorinIniParser();
  TQuorinIniParser(const TQuorinIniParser&) = delete;
  TQuorinIniParser& operator=(const TQuorinIniParser&) = delete;

  /// Reads a regular file into an empty document. INI_OK does not say that the file had a section.
  unsigned int LoadIni(const char* fileName);
  /// Writes the document with a UTF-8 byte-order mark in front. On INI_FAILED the file may be incomplete.
  unsigned int SaveIni(const char* fileName) const;
  /// The text that SaveIni() writes.
  unsigned int SaveText(std::string& text) const;
  /// Empties a loaded document.
  unsigned int ResetIni();

  unsigned int checkSectionAndKey(const char* section, const char* key) const;
  /// Whether the section has that key, here *with* regard to case, as in reads: a key written as Foo is not read as
  /// foo. Kept for callers that distinguish such keys.
  unsigned int doesKeyExist(const char* section, const char* key) const;

  /// Writes replace a value in its place or append a new entry, on an empty document too.
  unsigned int WriteString(const char* section, const char* key, const char* value);
  unsigned int WriteLong(const char* section, const char* key, long value);
  /// Six decimals, a decimal point in every locale. INI_FAILED for a number of 64 characters or more.
  unsigned int WriteDouble(const char* section, const char* key, double value);
  /// "true" or "false".
  unsigned int WriteBoolean(const char* section, const char* key, bool value);

  /// Copies at most size - 1 characters, and always terminates.
  unsigned int ReadString(const char* section, const char* key, char* buffer, unsigned int size) const;
  /// Decimal, or hexadecimal after "0x"; 0 for any other text.
  unsigned int ReadLong(const char* section, const char* key, long& value) const;
  /// 0.0 for a text that is not a number from its start to its end, or has 64 characters or more.
  unsigned int ReadDouble(const char* section, const char* key, double& value) const;
  /// True for texts that start with 1, T, Y or On, in any case.
  unsigned int ReadBoolean(const char* section, const char* key, bool& value) const;

private:
  struct TDocument;

  /// Finds the value of a key that is written exactly so. The value is null when the key has none.
  unsigned int FindValue(const char* section, const char* key, const char*& value) const;

  std::unique_ptr<TDocument> document_;
};

} // namespace QuorinUtility
