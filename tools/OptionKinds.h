// SPDX-License-Identifier: MIT
// Kinds of options that commands share: words, whole numbers, times, texts. Each refuses a wrong value in the same way.
#pragma once

#include "tools/Options.h"

#include <CLI/CLI.hpp>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace vxtool {

/// The words of an option with their values, in the order in which the help has them.
template <typename Value>
using TWords = std::vector<std::pair<std::string, Value>>;

inline const TWords<bool> kSwitches = {{"on", true}, {"off", false}};

/// The end of "FILE is not accepted; the name of a file is"; for AddText().
inline constexpr const char* kFileNameForm = "the name of a file is";
inline constexpr const char* kSecondsForm = "a time in s above 0 and at most 1e6 is";

CLI::Validator OneOf(const std::vector<std::string>& words);
/// For transform(): the parser takes a number that begins with 0 for octal, so it gets one that does not.
CLI::Validator WholeNumber(long lowest, long highest);

/// The name of a file or another text that must not be empty: an empty variable of a shell is an error, and does not
/// switch the option off.
/// @param accepted  the end of the message, for example kFileNameForm
CLI::Option* AddText(CLI::App& app, const std::string& name, std::string& target, const std::string& help,
                     const char* accepted);
/// --bundle and --keep-names. @return  --bundle
CLI::Option* AddBundle(CLI::App& app, TBundleOptions& target, const std::string& help);
CLI::Option* AddSeconds(CLI::App& app, const std::string& name, std::optional<double>& target,
                        const std::string& help);
/// An option with several numbers in one text. @p parse answers false when they are wrong.
CLI::Option* AddForm(CLI::App& app, const std::string& name, const std::function<bool(const std::string&)>& parse,
                     const std::string& form, const std::string& help);
/// An option that takes several of these words, with commas between them.
CLI::Option* AddWordList(CLI::App& app, const std::string& name, std::vector<std::string>& target,
                         const std::vector<std::string>& words, const std::string& help);

template <typename Value>
std::optional<Value> ValueOf(const TWords<Value>& words, const std::string& word)
{
  for (const auto& [name, value] : words)
    if (name == word) return value;
  return std::nullopt;
}

template <typename Value>
const char* WordFor(const TWords<Value>& words, Value wanted)
{
  for (const auto& [name, value] : words)
    if (value == wanted) return name.c_str();
  return "unknown";
}

template <typename Value>
CLI::Option* AddWord(CLI::App& app, const std::string& name, std::optional<Value>& target,
                     const TWords<Value>& words, const std::string& help)
{
  std::vector<std::string> allowed;
  allowed.reserve(words.size());
  for (const auto& word : words) allowed.push_back(word.first);
  return app
      .add_option_function<std::string>(
          name, [&target, &words](const std::string& word) { target = ValueOf(words, word); }, help)
      ->check(OneOf(allowed));
}

} // namespace vxtool
