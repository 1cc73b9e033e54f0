// SPDX-License-Identifier: MIT
// Replacing names.
#include "tools/doctor/TRedaction.h"

#include <algorithm>
#include <cstdlib>
#include <pwd.h>
#include <unistd.h>

namespace vxtool {

namespace {

constexpr std::size_t kShortestName = 3;

bool IsWordLetter(char letter)
{
  return (letter >= '0' && letter <= '9') || (letter >= 'A' && letter <= 'Z') ||
         (letter >= 'a' && letter <= 'z') || letter == '_' || static_cast<signed char>(letter) < 0;
}

} // namespace

TRedaction TRedaction::OfThisMachine()
{
  TRedaction redaction;
  // NOLINTBEGIN(concurrency-mt-unsafe): one thread
  if (const char* const home = std::getenv("HOME")) redaction.Hide(home, "~");
  if (const passwd* const user = getpwuid(getuid())) {
    redaction.Hide(user->pw_dir, "~");
    redaction.Hide(user->pw_name, "<user>");
  }
  for (const char* variable : {"USER", "LOGNAME", "SUDO_USER"})
    if (const char* const user = std::getenv(variable)) redaction.Hide(user, "<user>");
  // NOLINTEND(concurrency-mt-unsafe)
  char host[256] = "";
  if (gethostname(host, sizeof host - 1) == 0) redaction.Hide(host, "<host>");
  return redaction;
}

void TRedaction::Hide(const std::string& name, const std::string& word)
{
  if (name.size() < kShortestName) return;
  words_.emplace_back(name, word);
  std::stable_sort(words_.begin(), words_.end(),
                   [](const auto& one, const auto& other) { return one.first.size() > other.first.size(); });
}

// A name inside a longer word is not that name: "ana" in "analysis".
std::string TRedaction::Apply(std::string text) const
{
  for (const auto& [name, word] : words_) {
    for (std::size_t at = text.find(name); at != std::string::npos; at = text.find(name, at)) {
      const std::size_t end = at + name.size();
      const bool isWhole = (at == 0 || !IsWordLetter(text[at - 1]) || !IsWordLetter(name.front())) &&
                           (end == text.size() || !IsWordLetter(text[end]) || !IsWordLetter(name.back()));
      if (isWhole) text.replace(at, name.size(), word);
      at += isWhole ? word.size() : 1;
    }
  }
  return text;
}

} // namespace vxtool
