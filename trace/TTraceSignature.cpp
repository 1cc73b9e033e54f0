// SPDX-License-Identifier: MIT
// What is recorded of a function's arguments.
#include "trace/TTraceSignature.h"

#include <algorithm>

namespace {

constexpr std::string_view kUnused = "unused";
constexpr std::size_t kMaxArguments = 16;

struct TWord
{
  std::string_view word;
  TraceType type;
};
constexpr TWord kTypes[] = {
    {"text", TraceType::Text},       {"wtext", TraceType::Text},    {"wstring", TraceType::Text},
    {"pointer", TraceType::Pointer}, {"object", TraceType::Object}, {"words", TraceType::Words},
    {"pixels", TraceType::Pixels},   {"pot", TraceType::Pot},       {"status", TraceType::Status},
    {"code", TraceType::Code},       {"void", TraceType::Void}};
constexpr std::string_view kNumbers[] = {"i32", "i64", "u8", "u16", "u32", "u64", "f32", "f64"};

bool ParseType(std::string_view text, TTraceArgument& argument)
{
  if (std::find(std::begin(kNumbers), std::end(kNumbers), text) != std::end(kNumbers)) {
    argument.type = TraceType::Number;
    argument.number = text[0];
    argument.bytes = text == "u8" ? 1 : text == "u16" ? 2 : text.ends_with("32") ? 4 : 8;
    return true;
  }
  const auto* const found =
      std::find_if(std::begin(kTypes), std::end(kTypes), [text](const TWord& row) { return row.word == text; });
  if (found == std::end(kTypes)) return false;
  argument.type = found->type;
  argument.isWide = text == "wtext" || text == "wstring";
  argument.isString = text == "wstring";
  if (argument.type == TraceType::Status || argument.type == TraceType::Code) argument.bytes = 4;
  if (argument.type == TraceType::Code) argument.number = 'u';
  return true;
}

std::string_view NextWord(std::string_view& text)
{
  const std::size_t end = std::min(text.find(' '), text.size());
  const std::string_view word = text.substr(0, end);
  text.remove_prefix(std::min(end + 1, text.size()));
  return word;
}

} // namespace

std::optional<TTraceSignature> TTraceSignature::Parse(std::string_view text)
{
  TTraceSignature signature;
  const std::string_view result = NextWord(text);
  signature.isUnused_ = result == kUnused;
  if (!ParseType(signature.isUnused_ ? "code" : result, signature.result_)) return std::nullopt;

  std::vector<std::string> lengths;
  while (!text.empty()) {
    std::string_view word = NextWord(text);
    const std::size_t colon = word.find(':');
    if (colon == std::string_view::npos || signature.arguments_.size() == kMaxArguments) return std::nullopt;
    TTraceArgument argument;
    argument.name = word.substr(0, colon);
    word.remove_prefix(colon + 1);
    if (word.starts_with('*')) {
      argument.isOutput = true;
      word.remove_prefix(1);
    }
    std::string length;
    if (const std::size_t bracket = word.find('['); bracket != std::string_view::npos) {
      if (!word.ends_with(']')) return std::nullopt;
      length = word.substr(bracket + 1, word.size() - bracket - 2);
      word = word.substr(0, bracket);
      if (length.ends_with("*2")) {
        argument.factor = 2;
        length.resize(length.size() - 2);
      }
    }
    if (!ParseType(word, argument)) return std::nullopt;
    if (!length.empty() && argument.type == TraceType::Number) argument.type = TraceType::Array;
    signature.hasPixels_ |= argument.type == TraceType::Pixels;
    lengths.push_back(length);
    signature.arguments_.push_back(argument);
  }

  for (std::size_t i = 0; i < lengths.size(); ++i) {
    if (lengths[i].empty()) continue;
    for (std::size_t other = 0; other < lengths.size(); ++other)
      if (signature.arguments_[other].name == lengths[i])
        signature.arguments_[i].lengthArgument = static_cast<int>(other);
    if (signature.arguments_[i].lengthArgument < 0) return std::nullopt;
  }
  return signature;
}
