// SPDX-License-Identifier: MIT
// The fault plan language, one line a rule.
#include "vxcore/front/TFaultRule.h"

#include "vxcore/simulated/config/TConfigurationText.h"

#include <climits>
#include <sstream>
#include <vector>

namespace vxsim {

namespace {

/// The words of a line, taken one by one; anything from '#' on is a comment.
class TWords final
{
public:
  explicit TWords(const std::string& line)
  {
    std::istringstream stream(line.substr(0, line.find('#')));
    for (std::string word; stream >> word;) words_.push_back(word);
  }

  bool AtEnd() const { return next_ == words_.size(); }
  std::string Peek() const { return AtEnd() ? std::string() : words_[next_]; }
  std::string Take() { return AtEnd() ? std::string() : words_[next_++]; }
  bool TakeIf(const char* word)
  {
    if (Peek() != word) return false;
    ++next_;
    return true;
  }

private:
  std::vector<std::string> words_;
  size_t next_ = 0;
};

struct TActionWord
{
  const char* word;
  EFaultAction action;
  enum
  {
    Nothing,
    Number,
    Time,
    Text
  } argument;
};

const TActionWord kCallActions[] = {{"rc", EFaultAction::Code, TActionWord::Number},
                                    {"delay", EFaultAction::Delay, TActionWord::Time},
                                    {"out", EFaultAction::Output, TActionWord::Number},
                                    {"unterminated", EFaultAction::Unterminated, TActionWord::Nothing}};
const TActionWord kValueActions[] = {{"set", EFaultAction::SetValue, TActionWord::Text}};
const TActionWord kFrameActions[] = {{"drop", EFaultAction::Drop, TActionWord::Nothing},
                                     {"short", EFaultAction::Short, TActionWord::Number},
                                     {"oversize", EFaultAction::Oversize, TActionWord::Number},
                                     {"swap", EFaultAction::Swap, TActionWord::Number},
                                     {"null", EFaultAction::Null, TActionWord::Nothing},
                                     {"foreign", EFaultAction::Foreign, TActionWord::Nothing},
                                     {"repeat", EFaultAction::Repeat, TActionWord::Nothing},
                                     {"late", EFaultAction::Late, TActionWord::Time}};
const TActionWord kChunkActions[] = {{"len", EFaultAction::ChunkLength, TActionWord::Number},
                                     {"cid", EFaultAction::ChunkCid, TActionWord::Number},
                                     {"truncated", EFaultAction::ChunkTruncated, TActionWord::Nothing},
                                     {"random", EFaultAction::ChunkRandom, TActionWord::Number}};
const TActionWord kCameraActions[] = {{"unplug", EFaultAction::Unplug, TActionWord::Nothing},
                                      {"replug", EFaultAction::Replug, TActionWord::Time},
                                      {"stall", EFaultAction::Stall, TActionWord::Time}};

/// "250ms", "2s", "40us".
bool ReadTime(const std::string& word, int64_t& nanoseconds)
{
  const size_t unit = word.find_first_not_of("0123456789.");
  if (unit == std::string::npos) return false;
  const std::string name = word.substr(unit);
  const double scale = name == "s" ? 1e9 : name == "ms" ? 1e6 : name == "us" ? 1e3 : 0.0;
  double value = 0.0;
  if (scale == 0.0 || !ReadNumber(word.substr(0, unit), 0.0, 1e6, value)) return false;
  nanoseconds = static_cast<int64_t>(value * scale);
  return true;
}

bool ReadCount(const std::string& word, uint64_t& count)
{
  return ReadInteger(word, uint64_t{1}, uint64_t{1} << 62, count);
}

/// "at N", "from N", "every N", "any", and for frames also just "N".
bool ReadWhen(TWords& words, bool bareNumber, TFaultRule& rule, bool& given, std::string& error)
{
  given = true;
  if (words.TakeIf("any"))
    rule.interval = 1;
  else if (words.TakeIf("at"))
    given = ReadCount(words.Take(), rule.first);
  else if (words.TakeIf("from")) {
    rule.interval = 1;
    given = ReadCount(words.Take(), rule.first);
  } else if (words.TakeIf("every")) {
    given = ReadCount(words.Take(), rule.interval);
    rule.first = rule.interval;
  } else if (bareNumber && ReadCount(words.Peek(), rule.first))
    words.Take();
  else {
    given = false;
    return true;
  }
  if (!given) error = "a count of at least 1 is missing";
  return given;
}

template <size_t N>
bool ReadAction(TWords& words, const TActionWord (&actions)[N], TFaultRule& rule, std::string& error)
{
  const std::string word = words.Take();
  for (const TActionWord& action : actions) {
    if (word != action.word) continue;
    rule.action = action.action;
    bool good = true;
    const std::string argument = action.argument == TActionWord::Nothing ? std::string() : words.Take();
    if (action.argument == TActionWord::Number)
      good = ReadInteger(argument, LLONG_MIN, LLONG_MAX, rule.number);
    else if (action.argument == TActionWord::Time)
      good = ReadTime(argument, rule.durationNs);
    else if (action.argument == TActionWord::Text) {
      good = !argument.empty();
      rule.text = argument;
      while (good && !words.AtEnd() && words.Peek() != "at" && words.Peek() != "from" && words.Peek() != "every") {
        rule.text += ' ';
        rule.text += words.Take();
      }
    }
    if (!good) error = "'" + word + "' needs another argument than '" + argument + "'";
    return good;
  }
  error = word.empty() ? "the action is missing" : "unknown action '" + word + "'";
  return false;
}

bool ReadDevice(TWords& words, TFaultRule& rule, std::string& error)
{
  if (!words.TakeIf("device") || ReadInteger(words.Take(), 0, 9999, rule.device)) return true;
  error = "'device' needs a device index";
  return false;
}

bool ReadCall(TWords& words, TFaultRule& rule, std::string& error)
{
  rule.function = words.Take();
  if (rule.function.rfind("VX_", 0) != 0) {
    error = "'" + rule.function + "' is not a function of the library";
    return false;
  }
  if (words.TakeIf("feature")) rule.feature = Widen(words.Take());
  bool given = false;
  if (!ReadDevice(words, rule, error) || !ReadWhen(words, false, rule, given, error)) return false;
  if (!given) rule.interval = 1;
  if (!ReadAction(words, kCallActions, rule, error)) return false;
  // "rc 13 delay 250ms": the code comes late.
  if (rule.action == EFaultAction::Code && words.TakeIf("delay") && !ReadTime(words.Take(), rule.durationNs)) {
    error = "'delay' needs a time such as 250ms";
    return false;
  }
  return true;
}

bool ReadValue(TWords& words, TFaultRule& rule, std::string& error)
{
  rule.feature = Widen(words.Take());
  bool given = false;
  if (!ReadDevice(words, rule, error) || !ReadAction(words, kValueActions, rule, error)) return false;
  if (!ReadWhen(words, false, rule, given, error)) return false;
  if (!given) rule.interval = 1;
  return true;
}

template <size_t N>
bool ReadEvent(TWords& words, const TActionWord (&actions)[N], TFaultRule& rule, std::string& error)
{
  bool given = false;
  if (!ReadDevice(words, rule, error) || !ReadWhen(words, true, rule, given, error)) return false;
  if (!given) {
    error = "which one is missing: a number, 'any', 'at', 'from' or 'every'";
    return false;
  }
  return ReadAction(words, actions, rule, error);
}

bool ReadSeed(TWords& words, TFaultRule& rule, std::string& error)
{
  if (ReadInteger(words.Take(), 0LL, LLONG_MAX, rule.number)) return true;
  error = "'seed' needs a number";
  return false;
}

} // namespace

bool TFaultRule::Parse(const std::string& line, TFaultRule& rule, std::string& error)
{
  TWords words(line);
  TFaultRule result;
  const std::string subject = words.Take();
  std::string problem;
  bool good = false;
  if (subject == "call") {
    result.subject = EFaultSubject::Call;
    good = ReadCall(words, result, problem);
  } else if (subject == "value") {
    result.subject = EFaultSubject::Value;
    good = ReadValue(words, result, problem);
  } else if (subject == "frame") {
    result.subject = EFaultSubject::Frame;
    good = ReadEvent(words, kFrameActions, result, problem);
  } else if (subject == "chunk") {
    result.subject = EFaultSubject::Chunk;
    good = ReadEvent(words, kChunkActions, result, problem);
  } else if (subject == "camera") {
    result.subject = EFaultSubject::Camera;
    good = ReadEvent(words, kCameraActions, result, problem);
  } else if (subject == "seed") {
    result.subject = EFaultSubject::Seed;
    good = ReadSeed(words, result, problem);
  } else
    problem = "a rule begins with call, value, frame, chunk, camera or seed";

  if (good && !words.AtEnd()) {
    good = false;
    problem = "'" + words.Peek() + "' is too much";
  }
  if (good)
    rule = result;
  else
    error = "fault rule '" + line + "': " + problem;
  return good;
}

} // namespace vxsim
