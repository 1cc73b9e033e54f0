// SPDX-License-Identifier: MIT
// The fault plan language, one line a rule.
#include "vxcore/front/TFaultRule.h"

#include "utility/utf8.h"
#include "vxcore/backend/configuration_text.h"

#include <climits>
#include <sstream>
#include <vector>

namespace vxcore {

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

enum class EArgument
{
  Nothing,
  Number,
  Time
};

/// A word of the language for something that a rule does.
template <typename Kind>
struct TActionWord
{
  const char* word;
  Kind kind;
  EArgument argument;
};

const TActionWord<ECallFault> kCallActions[] = {{"rc", ECallFault::Code, EArgument::Number},
                                                {"delay", ECallFault::Delay, EArgument::Time},
                                                {"out", ECallFault::Output, EArgument::Number},
                                                {"unterminated", ECallFault::Unterminated, EArgument::Nothing}};
const TActionWord<EPlannedFault> kFrameActions[] = {{"drop", EPlannedFault::Drop, EArgument::Nothing},
                                                    {"short", EPlannedFault::Short, EArgument::Number},
                                                    {"oversize", EPlannedFault::Oversize, EArgument::Number},
                                                    {"swap", EPlannedFault::Swap, EArgument::Number},
                                                    {"null", EPlannedFault::Null, EArgument::Nothing},
                                                    {"foreign", EPlannedFault::Foreign, EArgument::Nothing},
                                                    {"repeat", EPlannedFault::Repeat, EArgument::Nothing},
                                                    {"late", EPlannedFault::Late, EArgument::Time}};
const TActionWord<EPlannedFault> kChunkActions[] = {
    {"len", EPlannedFault::ChunkLength, EArgument::Number},
    {"cid", EPlannedFault::ChunkCid, EArgument::Number},
    {"truncated", EPlannedFault::ChunkTruncated, EArgument::Nothing},
    {"random", EPlannedFault::ChunkRandom, EArgument::Number}};
const TActionWord<EPlannedFault> kCameraActions[] = {{"unplug", EPlannedFault::Unplug, EArgument::Nothing},
                                                     {"replug", EPlannedFault::Replug, EArgument::Time},
                                                     {"stall", EPlannedFault::Stall, EArgument::Time}};

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

template <typename Kind, size_t N>
bool ReadAction(TWords& words, const TActionWord<Kind> (&actions)[N], Kind& kind, TPlannedFault& fault,
                std::string& error)
{
  const std::string word = words.Take();
  for (const TActionWord<Kind>& action : actions) {
    if (word != action.word) continue;
    kind = action.kind;
    const std::string argument = action.argument == EArgument::Nothing ? std::string() : words.Take();
    bool good = true;
    if (action.argument == EArgument::Number)
      good = ReadInteger(argument, LLONG_MIN, LLONG_MAX, fault.number);
    else if (action.argument == EArgument::Time)
      good = ReadTime(argument, fault.durationNs);
    if (!good)
      error.assign("'").append(word).append("' needs another argument than '").append(argument).append("'");
    return good;
  }
  error = word.empty() ? "the action is missing" : "unknown action '" + word + "'";
  return false;
}

/// "set" and what is read, which may have several words.
bool ReadText(TWords& words, std::string& text, std::string& error)
{
  const std::string word = words.Take();
  if (word != "set") {
    error = word.empty() ? "the action is missing" : "unknown action '" + word + "'";
    return false;
  }
  text = words.Take();
  if (text.empty()) error = "'set' needs another argument than ''";
  while (!words.AtEnd() && words.Peek() != "at" && words.Peek() != "from" && words.Peek() != "every") {
    text += ' ';
    text += words.Take();
  }
  return !text.empty();
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
  if (words.TakeIf("feature")) rule.feature = FromUtf8(words.Take());
  bool given = false;
  if (!ReadDevice(words, rule, error) || !ReadWhen(words, false, rule, given, error)) return false;
  if (!given) rule.interval = 1;
  if (!ReadAction(words, kCallActions, rule.callFault, rule.fault, error)) return false;
  // "rc 13 delay 250ms": the code comes late.
  if (rule.callFault == ECallFault::Code && words.TakeIf("delay") &&
      !ReadTime(words.Take(), rule.fault.durationNs)) {
    error = "'delay' needs a time such as 250ms";
    return false;
  }
  return true;
}

bool ReadValue(TWords& words, TFaultRule& rule, std::string& error)
{
  rule.feature = FromUtf8(words.Take());
  bool given = false;
  if (!ReadDevice(words, rule, error) || !ReadText(words, rule.text, error)) return false;
  if (!ReadWhen(words, false, rule, given, error)) return false;
  if (!given) rule.interval = 1;
  return true;
}

template <size_t N>
bool ReadEvent(TWords& words, const TActionWord<EPlannedFault> (&actions)[N], TFaultRule& rule, std::string& error)
{
  bool given = false;
  if (!ReadDevice(words, rule, error) || !ReadWhen(words, true, rule, given, error)) return false;
  if (!given) {
    error = "which one is missing: a number, 'any', 'at', 'from' or 'every'";
    return false;
  }
  return ReadAction(words, actions, rule.fault.kind, rule.fault, error);
}

bool ReadSeed(TWords& words, TFaultRule& rule, std::string& error)
{
  if (ReadInteger(words.Take(), 0LL, LLONG_MAX, rule.fault.number)) return true;
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

} // namespace vxcore
