// SPDX-License-Identifier: MIT
// Reads line by line, so that an error has the number of its line.
#include "tools/TSettingsFile.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <system_error>

namespace vxtool {

namespace {

constexpr std::uintmax_t kMaxBytes = 1 << 20;
constexpr const char* kByteOrderMark = "\xEF\xBB\xBF";

std::string Trimmed(const std::string& text)
{
  constexpr const char* kBlanks = " \t\r";
  const std::size_t first = text.find_first_not_of(kBlanks);
  return first == std::string::npos ? "" : text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

// What a terminal would take for a command, or end a text in a message.
bool HasControls(const std::string& line)
{
  return std::any_of(line.begin(), line.end(),
                     [](unsigned char character) { return character < ' ' && character != '\t'; });
}

} // namespace

bool TSettingsFile::Fail(const std::string& message)
{
  error_ = path_ + message;
  return false;
}

bool TSettingsFile::Read(const std::string& path)
{
  path_ = path;
  std::error_code error;
  const std::filesystem::file_status status = std::filesystem::status(path, error);
  if (!std::filesystem::exists(status)) return Fail(": cannot be read: there is no such file");
  if (!std::filesystem::is_regular_file(status)) return Fail(": cannot be read: it is not a file");
  if (std::filesystem::file_size(path, error) > kMaxBytes) return Fail(": is too large for a file of settings");
  std::ifstream stream(path, std::ios::binary);
  if (!stream) return Fail(": cannot be read: " + std::generic_category().message(errno));
  std::string line;
  for (int number = 1; std::getline(stream, line); ++number) {
    if (number == 1 && line.starts_with(kByteOrderMark)) line.erase(0, 3);
    if (!ReadLine(Trimmed(line), number)) return false;
  }
  return !stream.bad() || Fail(": cannot be read: " + std::generic_category().message(errno));
}

bool TSettingsFile::ReadLine(const std::string& line, int number)
{
  const std::string place = ", line " + std::to_string(number) + ": ";
  if (HasControls(line)) return Fail(place + "is not text");
  if (line.empty() || line[0] == ';' || line[0] == '#') return true;
  if (line.front() == '[' && line.back() == ']') return AddSection(line.substr(1, line.size() - 2), place);
  const std::size_t sign = line.find('=');
  if (sign == std::string::npos || sign == 0) return Fail(place + line + " is not accepted; KEY = VALUE is");
  const TSettingsEntry entry = {section_, Trimmed(line.substr(0, sign)), Trimmed(line.substr(sign + 1)), number};
  if (section_.empty()) return Fail(place + entry.key + ": stands before the first section, [" + kSettings + "]");
  for (const TSettingsEntry& other : entries_)
    if (other.section == entry.section && other.key == entry.key)
      return Fail(place + entry.key + ": stands in line " + std::to_string(other.line) + ", too");
  entries_.push_back(entry);
  return true;
}

bool TSettingsFile::AddSection(const std::string& name, const std::string& place)
{
  for (const char* known : {kCamera, kSettings, kFeatures})
    if (name == known) {
      section_ = name;
      return true;
    }
  return Fail(place + "[" + name + "]: there is no such section; there are [" + kCamera + "], [" + kSettings +
              "] and [" + kFeatures + "]");
}

} // namespace vxtool
