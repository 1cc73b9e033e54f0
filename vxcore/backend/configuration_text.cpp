// SPDX-License-Identifier: MIT
// The text of a configuration: INI entries with their line numbers, and strict readers of single values.
#include "vxcore/backend/configuration_text.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <fcntl.h>
#include <map>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#define SI_IMPLEMENTATION // defines the templates' bodies here
#define SI_NO_CONVERSION  // 8-bit text only, as in the file
#include <SimpleIni.h>

namespace vxcore {

namespace {

constexpr off_t kMaxFileBytes = 16 * 1024 * 1024;

using TKeyLines = std::map<std::pair<std::string, std::string>, std::vector<int>>;

/// The INI reader takes any line; this finds the ones that mean nothing, and the line of each key.
bool ScanLines(const std::string& text, TKeyLines& keyLines, std::string& error)
{
  std::string section;
  int number = 0;
  size_t position = 0;
  while (position < text.size()) {
    ++number;
    const size_t end = std::min(text.find('\n', position), text.size());
    const std::string_view line = Trim(std::string_view(text).substr(position, end - position));
    position = end + 1;
    if (line.empty() || line.front() == ';' || line.front() == '#') continue;
    const std::string where = "line " + std::to_string(number);
    if (line.find('\0') != std::string_view::npos) {
      error = where + ": has a zero byte";
      return false;
    }
    if (line.front() == '[') {
      if (line.back() != ']') {
        error = where + ": section without ']'";
        return false;
      }
      section = Trim(line.substr(1, line.size() - 2));
      continue;
    }
    const size_t equals = line.find('=');
    if (equals == std::string_view::npos || equals == 0) {
      error = where + ": neither a section nor 'key = value'";
      return false;
    }
    keyLines[{section, std::string(Trim(line.substr(0, equals)))}].push_back(number);
  }
  return true;
}

bool IsBlank(char c)
{
  return c == ' ' || c == '\t' || c == '\r';
}

} // namespace

std::string TConfigurationEntry::Where() const
{
  return "line " + std::to_string(line) + ", [" + section + "] " + key;
}

bool ReadConfigurationFile(const std::string& path, std::string& text, std::string& error)
{
  const int descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK);
  if (descriptor < 0) {
    error = "cannot be opened: " + std::generic_category().message(errno);
    return false;
  }
  struct stat status
  {
  };
  if (fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode))
    error = "is not a regular file";
  else if (status.st_size > kMaxFileBytes)
    error = "is larger than " + std::to_string(kMaxFileBytes) + " bytes";
  else {
    text.resize(static_cast<size_t>(status.st_size) + 1); // one more: an empty file is read, too, and may refuse
    size_t length = 0;
    ssize_t got = 0;
    while (length < text.size() && (got = read(descriptor, text.data() + length, text.size() - length)) > 0)
      length += static_cast<size_t>(got);
    text.resize(length);
    if (got < 0) error = "cannot be read: " + std::generic_category().message(errno);
  }
  close(descriptor);
  return error.empty();
}

bool ReadEntries(const std::string& text, std::vector<TConfigurationEntry>& entries, std::string& error)
{
  TKeyLines keyLines;
  if (!ScanLines(text, keyLines, error)) return false;

  CSimpleIniCaseA ini(true, true, false); // UTF-8, keys may repeat, one line a value
  if (ini.LoadData(text) < 0) {
    error = "cannot be read as an INI text";
    return false;
  }
  CSimpleIniCaseA::TNamesDepend sections;
  ini.GetAllSections(sections);
  sections.sort(CSimpleIniCaseA::Entry::LoadOrder());
  for (const auto& section : sections) {
    CSimpleIniCaseA::TNamesDepend keys;
    ini.GetAllKeys(section.pItem, keys);
    keys.sort(CSimpleIniCaseA::Entry::LoadOrder());
    for (const auto& key : keys) {
      CSimpleIniCaseA::TNamesDepend values;
      ini.GetAllValues(section.pItem, key.pItem, values);
      values.sort(CSimpleIniCaseA::Entry::LoadOrder());
      const std::vector<int>& lines = keyLines[{section.pItem, key.pItem}];
      size_t repeat = 0;
      for (const auto& value : values) {
        TConfigurationEntry entry{section.pItem, key.pItem, std::string(Trim(value.pItem)), 0};
        if (repeat < lines.size()) entry.line = lines[repeat++];
        entries.push_back(std::move(entry));
      }
    }
  }
  return true;
}

std::string_view Trim(std::string_view text)
{
  while (!text.empty() && IsBlank(text.front())) text.remove_prefix(1);
  while (!text.empty() && IsBlank(text.back())) text.remove_suffix(1);
  return text;
}

std::vector<std::string> Split(const std::string& text, char separator)
{
  std::vector<std::string> pieces;
  if (Trim(text).empty()) return pieces;
  size_t start = 0;
  while (start <= text.size()) {
    const size_t end = std::min(text.find(separator, start), text.size());
    pieces.emplace_back(Trim(std::string_view(text).substr(start, end - start)));
    start = end + 1;
  }
  return pieces;
}

bool ReadNumber(std::string_view text, double minimum, double maximum, double& value)
{
  double read = 0.0;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), read);
  if (result.ec != std::errc() || result.ptr != text.data() + text.size()) return false;
  if (!std::isfinite(read) || read < minimum || read > maximum) return false;
  value = read;
  return true;
}

bool ReadSwitch(std::string_view text, bool& value)
{
  value = text == "on" || text == "yes" || text == "true" || text == "1";
  return value || text == "off" || text == "no" || text == "false" || text == "0";
}

} // namespace vxcore
