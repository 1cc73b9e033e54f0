// SPDX-License-Identifier: MIT
// An INI document that is read, changed and saved as a whole.
#include "ini/TQuorinIniParser.h"

#include "ini/regular_file.h"
#include "ini/text_double.h"
#include "utility/TQuorinMisc.h"

#include <array>
#include <charconv>
#include <cstring>
#include <exception>
#include <string>

#define SI_IMPLEMENTATION // the templates' bodies are needed here
#define SI_NO_CONVERSION  // 8-bit text only, as in the file
#include <SimpleIni.h>

namespace QuorinUtility {

namespace {

constexpr bool kUtf8 = true;
constexpr bool kRepeatedKeys = false;
constexpr bool kMultiLineValues = false;
constexpr bool kWithSignature = true;
constexpr int kDecimals = 6;
constexpr std::size_t kNumberSize = 64; // with the terminator

bool WriteFile(const char* fileName, const std::string& text)
{
  std::FILE* file = std::fopen(fileName, "wbe");
  if (!file) return false;
  const bool isWritten = std::fwrite(text.data(), 1, text.size(), file) == text.size();
  const bool isClosed = std::fclose(file) == 0; // a full disk may be reported only here
  return isWritten && isClosed;
}

double WholeDouble(const char* text)
{
  if (!text || !*text || std::strlen(text) >= kNumberSize) return 0.0;
  const char* end = nullptr;
  const double number = LeadingDouble(text, &end);
  return *end == '\0' ? number : 0.0;
}

bool IsTrue(const char* text)
{
  if (!text || !*text) return false;
  if (*text == 'O' || *text == 'o') return text[1] == 'n' || text[1] == 'N';
  return std::strchr("1TYty", *text) != nullptr;
}

} // namespace

struct TQuorinIniParser::TDocument
{
  CSimpleIniA ini{kUtf8, kRepeatedKeys, kMultiLineValues};
};

TQuorinIniParser::TQuorinIniParser() : document_(std::make_unique<TDocument>()) {}

TQuorinIniParser::~TQuorinIniParser()
{
  ResetIni();
}

unsigned int TQuorinIniParser::LoadIni(const char* fileName)
{
  if (!document_->ini.IsEmpty()) return INI_ALREADY_LOADED;
  if (!fileName) return INI_NULL_FILE_NAME;
  const TOpenFile file = OpenRegularFile(fileName);
  if (!file) return INI_FAILED;
  document_->ini.Reset(); // an earlier file without sections may have left a comment
  try {
    if (document_->ini.LoadFile(file.get()) >= 0) return INI_OK;
  } catch (const std::exception&) { // no memory
  }
  document_->ini.Reset();
  return INI_FAILED;
}

unsigned int TQuorinIniParser::SaveIni(const char* fileName) const
{
  if (document_->ini.IsEmpty()) return INI_NOT_LOADED;
  if (!fileName) return INI_NULL_FILE_NAME;
  std::string text; // complete before the file is opened
  const unsigned int result = SaveText(text);
  if (result != INI_OK) return result;
  return WriteFile(fileName, text) ? INI_OK : INI_FAILED;
}

unsigned int TQuorinIniParser::SaveText(std::string& text) const
{
  if (document_->ini.IsEmpty()) return INI_NOT_LOADED;
  try {
    return document_->ini.Save(text, kWithSignature) < 0 ? INI_FAILED : INI_OK;
  } catch (const std::exception&) { // no memory
    return INI_FAILED;
  }
}

unsigned int TQuorinIniParser::ResetIni()
{
  if (document_->ini.IsEmpty()) return INI_NOT_LOADED;
  document_->ini.Reset();
  return INI_OK;
}

unsigned int TQuorinIniParser::checkSectionAndKey(const char* section, const char* key) const
{
  if (!section) return INI_NULL_SECTION;
  if (!key) return INI_NULL_KEY;
  return INI_OK;
}

unsigned int TQuorinIniParser::doesKeyExist(const char* section, const char* key) const
{
  const char* value = nullptr;
  return FindValue(section, key, value);
}

unsigned int TQuorinIniParser::WriteString(const char* section, const char* key, const char* value)
{
  const unsigned int status = checkSectionAndKey(section, key);
  if (status != INI_OK) return status;
  if (!value) return INI_NULL_VALUE;
  try {
    return document_->ini.SetValue(section, key, value) < 0 ? INI_FAILED : INI_OK;
  } catch (const std::exception&) { // no memory
    return INI_FAILED;
  }
}

unsigned int TQuorinIniParser::WriteLong(const char* section, const char* key, long value)
{
  std::array<char, kNumberSize> text;
  TQuorinMisc::snprintf(text.data(), text.size(), "%ld", value);
  return WriteString(section, key, text.data());
}

unsigned int TQuorinIniParser::WriteDouble(const char* section, const char* key, double value)
{
  const unsigned int status = checkSectionAndKey(section, key);
  if (status != INI_OK) return status;
  std::array<char, kNumberSize> text{};
  // As "%f" formats it, but with a point in every locale.
  const auto result =
      std::to_chars(text.data(), text.data() + text.size() - 1, value, std::chars_format::fixed, kDecimals);
  if (result.ec != std::errc()) return INI_FAILED;
  return WriteString(section, key, text.data());
}

unsigned int TQuorinIniParser::WriteBoolean(const char* section, const char* key, bool value)
{
  return WriteString(section, key, value ? "true" : "false");
}

unsigned int TQuorinIniParser::ReadString(const char* section, const char* key, char* buffer,
                                          unsigned int size) const
{
  const char* text = nullptr;
  unsigned int status = checkSectionAndKey(section, key);
  if (status == INI_OK && !buffer) status = INI_FAILED;
  if (status == INI_OK) status = FindValue(section, key, text);
  if (status != INI_OK) return status;
  if (!text) return INI_NO_VALUE;
  TQuorinMisc::strncpy(buffer, text, size);
  return INI_OK;
}

unsigned int TQuorinIniParser::ReadLong(const char* section, const char* key, long& value) const
{
  const char* text = nullptr;
  unsigned int status = checkSectionAndKey(section, key);
  if (status == INI_OK) status = FindValue(section, key, text);
  if (status == INI_OK) value = document_->ini.GetLongValue(section, key, 0);
  return status;
}

unsigned int TQuorinIniParser::ReadDouble(const char* section, const char* key, double& value) const
{
  const char* text = nullptr;
  unsigned int status = checkSectionAndKey(section, key);
  if (status == INI_OK) status = FindValue(section, key, text);
  if (status == INI_OK) value = WholeDouble(text);
  return status;
}

unsigned int TQuorinIniParser::ReadBoolean(const char* section, const char* key, bool& value) const
{
  const char* text = nullptr;
  unsigned int status = checkSectionAndKey(section, key);
  if (status == INI_OK) status = FindValue(section, key, text);
  if (status == INI_OK) value = IsTrue(text);
  return status;
}

unsigned int TQuorinIniParser::FindValue(const char* section, const char* key, const char*& value) const
{
  if (document_->ini.IsEmpty()) return INI_NOT_LOADED;
  const CSimpleIniA::TKeyVal* keys = document_->ini.GetSection(section);
  if (!keys || !key) return INI_NO_SUCH_KEY;
  // Without regard to case there is at most one key of that name.
  const auto entry = keys->find(key);
  if (entry == keys->end() || std::strcmp(entry->first.pItem, key) != 0) return INI_NO_SUCH_KEY;
  value = entry->second;
  return INI_OK;
}

} // namespace QuorinUtility
