// SPDX-License-Identifier: MIT
// A file of settings as text: sections with keys and values. It knows no setting.
#pragma once

#include <string>
#include <vector>

namespace vxtool {

/// One line "key = value".
struct TSettingsEntry
{
  std::string section;
  std::string key;
  std::string value;
  int line = 0;
};

/// Reads an INI file strictly: a line that is not understood and a key that is given twice are errors. One thread at a
/// time.
class TSettingsFile final
{
public:
  static constexpr const char* kCamera = "Camera";
  static constexpr const char* kSettings = "Settings";
  static constexpr const char* kFeatures = "Features";

  /// False with Error() set: one line that names the file, and the line in it.
  bool Read(const std::string& path);
  const std::vector<TSettingsEntry>& Entries() const { return entries_; }
  const std::string& Error() const { return error_; }

private:
  bool Fail(const std::string& message);
  bool ReadLine(const std::string& line, int number);
  bool AddSection(const std::string& name, const std::string& place);

  std::string path_;
  std::string section_;
  std::vector<TSettingsEntry> entries_;
  std::string error_;
};

} // namespace vxtool
