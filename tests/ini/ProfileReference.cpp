// SPDX-License-Identifier: MIT
// A second reader of profile files, to compare the library's with.
#include "tests/ini/ProfileReference.h"

#include <algorithm>
#include <strings.h>

namespace {

constexpr std::size_t kNone = std::string::npos;

/// What is kept of a name or value: 255 characters without the dropped ones, up to a zero byte.
std::string Kept(std::string text, const std::string& dropped)
{
  std::erase_if(text, [&](char c) { return dropped.find(c) != kNone; });
  if (text.size() > 255) text.resize(255);
  return text.c_str();
}

bool IsSame(const std::string& left, const std::string& right)
{
  return strcasecmp(left.c_str(), right.c_str()) == 0;
}

} // namespace

ProfileReference::ProfileReference(std::string text) : text_(std::move(text))
{
  std::size_t position = text_.find_first_of(";[");
  while (position != kNone) {
    if (text_[position] == ';') {
      position = NextLine(position);
    } else {
      const std::size_t end = text_.find(']', position);
      if (end == kNone) return;
      sections_.push_back({Kept(text_.substr(position + 1, end - position - 1), " "), end + 1});
      position = end;
    }
    position = text_.find_first_of(";[", position);
  }
}

std::vector<std::string> ProfileReference::Sections() const
{
  std::vector<std::string> names;
  for (const TMark& section : sections_) names.push_back(section.name);
  return names;
}

std::optional<std::vector<std::string>> ProfileReference::Keys(const std::string& section) const
{
  const auto behind = BehindSection(section);
  if (!behind) return std::nullopt;
  std::vector<std::string> names;
  for (const TMark& key : KeysFrom(NextLine(*behind))) names.push_back(key.name);
  return names;
}

std::optional<std::string> ProfileReference::Value(const std::string& section, const std::string& key) const
{
  const auto behind = BehindSection(section);
  if (!behind) return std::nullopt;
  for (const TMark& candidate : KeysFrom(*behind)) {
    if (!IsSame(candidate.name, key)) continue;
    const std::size_t end = text_.find_first_of("\r\n;", candidate.behind);
    if (end == kNone) return std::nullopt;
    return Kept(text_.substr(candidate.behind, end - candidate.behind), " \"'");
  }
  return std::nullopt;
}

std::optional<std::size_t> ProfileReference::BehindSection(const std::string& section) const
{
  const auto found = std::find_if(sections_.begin(), sections_.end(),
                                  [&](const TMark& candidate) { return IsSame(candidate.name, section); });
  if (found == sections_.end()) return std::nullopt;
  return found->behind;
}

std::vector<ProfileReference::TMark> ProfileReference::KeysFrom(std::size_t position) const
{
  std::vector<TMark> keys;
  while (true) {
    position = text_.find_first_not_of(" \r\n", position);
    if (position == kNone || text_[position] == '[') return keys;
    if (text_[position] != ';') {
      const std::size_t equals = text_.find('=', position);
      if (equals == kNone) return keys;
      keys.push_back({Kept(text_.substr(position, equals - position), " "), equals + 1});
      position = equals + 1;
    }
    position = NextLine(position);
  }
}

std::size_t ProfileReference::NextLine(std::size_t position) const
{
  const std::size_t feed = text_.find('\n', position);
  return feed == kNone ? text_.size() : feed + 1;
}
