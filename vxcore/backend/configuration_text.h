// SPDX-License-Identifier: MIT
// The text of a configuration: INI entries with their line numbers, and strict readers of single values.
#pragma once

#include <charconv>
#include <string>
#include <string_view>
#include <vector>

namespace vxcore {

/// One `key = value` line.
struct TConfigurationEntry
{
  std::string section;
  std::string key;
  std::string value;
  int line = 0;

  /// "line 7, [Camera0] Model", for messages.
  std::string Where() const;
};

/// Reads a configuration file. Anything but a regular file is refused before it is read: a FIFO may block, a
/// device may have no end.
bool ReadConfigurationFile(const std::string& path, std::string& text, std::string& error);

/// Reads the entries of a text in the order of their sections. False, with a message, when a line is none of
/// blank, comment, section and `key = value`.
bool ReadEntries(const std::string& text, std::vector<TConfigurationEntry>& entries, std::string& error);

/// Text without blanks at its ends.
std::string_view Trim(std::string_view text);
/// The trimmed pieces between separators; none of an empty text.
std::vector<std::string> Split(const std::string& text, char separator);

/// A whole decimal integer (0x: hexadecimal) within limits.
template <typename Integer>
bool ReadInteger(std::string_view text, Integer minimum, Integer maximum, Integer& value)
{
  const bool hexadecimal = text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X');
  if (hexadecimal) text.remove_prefix(2);
  Integer read{};
  const auto result = std::from_chars(text.data(), text.data() + text.size(), read, hexadecimal ? 16 : 10);
  if (result.ec != std::errc() || result.ptr != text.data() + text.size() || text.empty()) return false;
  if (read < minimum || read > maximum) return false;
  value = read;
  return true;
}

/// A finite number within limits.
bool ReadNumber(std::string_view text, double minimum, double maximum, double& value);
/// "on"/"yes"/"true"/"1" or "off"/"no"/"false"/"0".
bool ReadSwitch(std::string_view text, bool& value);

} // namespace vxcore
