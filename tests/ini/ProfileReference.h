// SPDX-License-Identifier: MIT
// A second reader of profile files, to compare the library's with.
#pragma once

#include <optional>
#include <string>
#include <vector>

/// Reads a profile text that lies in memory as a whole, by searching for the characters that matter. It shares no
/// code and no way of going about it with the library's reader, which sees one character at a time.
class ProfileReference final
{
public:
  explicit ProfileReference(std::string text);

  std::vector<std::string> Sections() const;
  /// None when the section is missing.
  std::optional<std::vector<std::string>> Keys(const std::string& section) const;
  /// None when section, key or value is missing.
  std::optional<std::string> Value(const std::string& section, const std::string& key) const;

private:
  struct TMark
  {
    std::string name;
    std::size_t behind;
  };

  std::optional<std::size_t> BehindSection(const std::string& section) const;
  std::vector<TMark> KeysFrom(std::size_t position) const;
  std::size_t NextLine(std::size_t position) const;

  std::string text_;
  std::vector<TMark> sections_;
};
