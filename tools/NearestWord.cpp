// SPDX-License-Identifier: MIT
// The edit distance of words, with exchanged neighbours as one error.
#include "tools/NearestWord.h"

#include <algorithm>

namespace vxtool {

namespace {

constexpr std::size_t kMinBeginning = 3; // letters that are enough to be an abbreviation
constexpr std::size_t kLettersPerError = 3;

std::size_t ErrorsBetween(const std::string& a, const std::string& b)
{
  std::vector<std::vector<std::size_t>> errors(a.size() + 1, std::vector<std::size_t>(b.size() + 1));
  for (std::size_t i = 0; i <= a.size(); ++i) {
    for (std::size_t j = 0; j <= b.size(); ++j) {
      if (i == 0 || j == 0) {
        errors[i][j] = i + j;
        continue;
      }
      const std::size_t replaced = errors[i - 1][j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1);
      errors[i][j] = std::min({replaced, errors[i - 1][j] + 1, errors[i][j - 1] + 1});
      if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1])
        errors[i][j] = std::min(errors[i][j], errors[i - 2][j - 2] + 1);
    }
  }
  return errors[a.size()][b.size()];
}

} // namespace

std::string NearestWord(const std::string& word, const std::vector<std::string>& candidates)
{
  std::string nearest;
  std::size_t fewest = std::max<std::size_t>(1, word.size() / kLettersPerError) + 1;
  for (const std::string& candidate : candidates) {
    const bool isBeginning = word.size() >= kMinBeginning && candidate.starts_with(word);
    const std::size_t errors = isBeginning ? 1 : ErrorsBetween(word, candidate);
    if (errors >= fewest) continue;
    fewest = errors;
    nearest = candidate;
  }
  return nearest;
}

} // namespace vxtool
