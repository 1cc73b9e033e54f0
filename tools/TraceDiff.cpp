// SPDX-License-Identifier: MIT
// Compares two traces.
#include "tools/TraceDiff.h"

#include "tools/TraceText.h"
#include "vxmcd_result_codes.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <map>

namespace vxtool {

namespace {

// Beyond as many calls that only one of the traces has, they are of different programs.
constexpr std::size_t kMaxChanges = 2000;
// As many calls stand before the first difference, and belong to it at most.
constexpr std::size_t kCallsBefore = 5;
// As many calls, those into the feature library included, a loop may have that asks until an answer changes.
constexpr std::size_t kMaxLoop = 64;
// How the names of functions begin that ask.
constexpr const char* kQuestions[] = {"Get", "Is", "vxmcd_Get", "VX_Get", "VX_Is"};

using TCalls = std::vector<const TTraceCall*>;

TCalls CallsOf(const TTraceFile& file, std::uint32_t thread, const TTraceOptions& options)
{
  TCalls calls;
  for (const TTraceCall& call : file.Calls())
    if (call.thread == thread && !(options.isApiOnly && !call.function->isApi) &&
        !(options.isCoreOnly && call.function->isApi))
      calls.push_back(&call);
  return calls;
}

// What is the same in two runs of a program: the function and what it was given.
std::string KeyOf(const TTraceCall& call)
{
  std::string key = call.function->name;
  const auto values = call.Values();
  const auto& arguments = call.function->signature.Arguments();
  for (std::size_t i = 0; i < values.size(); ++i)
    if (!arguments[i].isOutput && arguments[i].type != TraceType::Pointer) key += "," + values[i].Text();
  return key;
}

// What came back. Clock values differ in each run, and pixels have noise: of them, how many there are.
std::string AnswerOf(const TTraceCall& call)
{
  std::string answer = ResultOf(call);
  const auto values = call.Values();
  const auto& arguments = call.function->signature.Arguments();
  for (std::size_t i = 0; i < values.size(); ++i) {
    if (!arguments[i].isOutput || arguments[i].name == "ticks") continue;
    TTraceValue value = values[i];
    value.pixels.checksum = 0;
    answer += "," + value.Text();
  }
  return answer;
}

// Whether the call found that no image has come. How often it did depends on the time.
bool IsInVain(const TTraceCall& call)
{
  return call.state == CallState::Ended && call.Code() == RC_NO_NEW_DATA;
}

// Whether the call only asks, so that it may be repeated any number of times.
bool ChangesNothing(const TTraceCall& call)
{
  const std::string& name = call.function->name;
  if (call.state != CallState::Ended || name.starts_with("GetOldestImage")) return false;
  const auto asks = [&name](const char* start) { return name.starts_with(start); };
  return std::any_of(std::begin(kQuestions), std::end(kQuestions), asks);
}

// How often a program asks until the answer changes depends on the time. This leaves out calls that found no image, with
// those inside of them, and of a call, or a loop of calls, that is repeated with the same arguments and answers all but the
// first one.
TCalls WithoutRepeats(const TCalls& calls)
{
  std::map<std::string, std::size_t> numbers; // of arguments and answers
  TCalls kept;
  std::vector<std::size_t> asked; // of those kept: their number, 0 for a call that changes something
  // Whether the last calls are the same as those before them.
  const auto isRepeat = [&asked](std::size_t loop) {
    if (2 * loop > asked.size()) return false;
    const auto last = asked.end() - static_cast<std::ptrdiff_t>(loop);
    return std::equal(last, asked.end(), last - static_cast<std::ptrdiff_t>(loop)) &&
           std::find(last, asked.end(), 0U) == asked.end();
  };
  for (std::size_t at = 0; at < calls.size(); ++at) {
    const TTraceCall& call = *calls[at];
    if (IsInVain(call)) {
      while (at + 1 < calls.size() && calls[at + 1]->depth > call.depth) ++at;
      continue;
    }
    kept.push_back(&call);
    const bool isQuestion = ChangesNothing(call);
    asked.push_back(
        isQuestion ? numbers.emplace(KeyOf(call) + "=" + AnswerOf(call), numbers.size() + 1).first->second : 0);
    std::size_t loop = 1;
    while (isQuestion && loop <= kMaxLoop && !isRepeat(loop)) ++loop;
    if (!isQuestion || loop > kMaxLoop) continue;
    kept.resize(kept.size() - loop);
    asked.resize(kept.size());
  }
  return kept;
}

struct TDifferences
{
  std::size_t calls = 0; ///< in both
  std::size_t firstOnly = 0;
  std::size_t secondOnly = 0;
  std::size_t answers = 0;
  std::size_t firstRepeats = 0; ///< that were left out
  std::size_t secondRepeats = 0;
  std::string first; ///< the first difference, in words

  bool IsNone() const { return first.empty(); }
};

std::string LinesBefore(const TCalls& calls, std::size_t index)
{
  std::string text;
  for (std::size_t i = index - std::min(index, kCallsBefore); i < index; ++i) text += MarkedLine(" ", *calls[i]);
  return text;
}

// The calls from a step on that only one of the traces has.
std::string LinesFrom(const std::vector<TDiffStep>& steps, std::size_t index, const TCalls& first,
                      const TCalls& second)
{
  std::string text;
  for (std::size_t end = std::min(steps.size(), index + kCallsBefore); index < end; ++index) {
    const TDiffStep& step = steps[index];
    if (step.kind == TDiffStep::Kind::Both) break;
    text += step.kind == TDiffStep::Kind::FirstOnly ? MarkedLine("<", *first[step.first])
                                                    : MarkedLine(">", *second[step.second]);
  }
  return text;
}

void CompareThreads(const TCalls& allOfFirst, const TCalls& allOfSecond, bool isResultsOnly,
                    TDifferences& differences)
{
  const TCalls first = WithoutRepeats(allOfFirst);
  const TCalls second = WithoutRepeats(allOfSecond);
  differences.firstRepeats += allOfFirst.size() - first.size();
  differences.secondRepeats += allOfSecond.size() - second.size();
  std::vector<std::string> firstKeys;
  std::vector<std::string> secondKeys;
  for (const TTraceCall* const call : first) firstKeys.push_back(KeyOf(*call));
  for (const TTraceCall* const call : second) secondKeys.push_back(KeyOf(*call));
  const auto steps = ShortestDiff(firstKeys, secondKeys, kMaxChanges);
  if (steps.empty() && !(first.empty() && second.empty())) {
    const auto [a, b] = std::mismatch(firstKeys.begin(), firstKeys.end(), secondKeys.begin(), secondKeys.end());
    const auto same = static_cast<std::size_t>(a - firstKeys.begin());
    differences.calls += same;
    differences.firstOnly += first.size() - same;
    differences.secondOnly += second.size() - same;
    if (!differences.IsNone()) return;
    differences.first = LinesBefore(first, same);
    if (a != firstKeys.end()) differences.first += MarkedLine("<", *first[same]);
    if (b != secondKeys.end()) differences.first += MarkedLine(">", *second[same]);
    differences.first += "what follows has too many differences to be compared\n";
    return;
  }
  const auto note = [&](const std::string& text, const TDiffStep& step) {
    if (!differences.IsNone()) return;
    const bool hasFirst = step.kind != TDiffStep::Kind::SecondOnly;
    differences.first = (hasFirst ? LinesBefore(first, step.first) : LinesBefore(second, step.second)) + text;
  };
  for (const TDiffStep& step : steps) {
    if (step.kind == TDiffStep::Kind::Both) {
      ++differences.calls;
      const TTraceCall& a = *first[step.first];
      const TTraceCall& b = *second[step.second];
      if (AnswerOf(a) == AnswerOf(b)) continue;
      ++differences.answers;
      note(MarkedLine("<", a) + MarkedLine(">", b), step);
    } else if (!isResultsOnly) {
      const bool isFirst = step.kind == TDiffStep::Kind::FirstOnly;
      ++(isFirst ? differences.firstOnly : differences.secondOnly);
      note(LinesFrom(steps, static_cast<std::size_t>(&step - steps.data()), first, second), step);
    }
  }
}

// Threads have other numbers in each run: they belong together when their first calls are of the same function.
std::vector<std::pair<TCalls, TCalls>> MatchThreads(const TTraceFile& a, const TTraceFile& b,
                                                    const TTraceOptions& options)
{
  std::vector<TCalls> seconds;
  for (const auto& thread : b.Threads()) seconds.push_back(CallsOf(b, thread.number, options));
  std::vector<std::pair<TCalls, TCalls>> pairs;
  for (const auto& thread : a.Threads()) {
    TCalls first = CallsOf(a, thread.number, options);
    const auto found = std::find_if(seconds.begin(), seconds.end(), [&](const TCalls& calls) {
      return !calls.empty() && !first.empty() && calls.front()->function->name == first.front()->function->name;
    });
    pairs.emplace_back(std::move(first), found == seconds.end() ? TCalls() : *found);
    if (found != seconds.end()) seconds.erase(found);
  }
  for (TCalls& rest : seconds) pairs.emplace_back(TCalls(), std::move(rest));
  return pairs;
}

} // namespace

std::vector<TDiffStep> ShortestDiff(const std::vector<std::string>& first, const std::vector<std::string>& second,
                                    std::size_t maxChanges)
{
  using Index = std::ptrdiff_t;
  const auto firstSize = static_cast<Index>(first.size());
  const auto secondSize = static_cast<Index>(second.size());
  const Index limit = std::min(firstSize + secondSize, static_cast<Index>(maxChanges));
  // The farthest place in the first list on each diagonal, after each number of changes.
  std::vector<Index> farthest(static_cast<std::size_t>(2 * limit + 3), 0);
  std::vector<std::vector<Index>> history;
  const auto at = [limit](std::vector<Index>& places, Index diagonal) -> Index& {
    return places[static_cast<std::size_t>(diagonal + limit + 1)];
  };
  const auto comesDown = [&](std::vector<Index>& places, Index diagonal, Index changes) {
    return diagonal == -changes || (diagonal != changes && at(places, diagonal - 1) < at(places, diagonal + 1));
  };
  Index changes = 0;
  for (bool isFound = false; !isFound; ++changes) {
    if (changes > limit) return {};
    history.push_back(farthest);
    for (Index diagonal = -changes; diagonal <= changes && !isFound; diagonal += 2) {
      Index x =
          comesDown(farthest, diagonal, changes) ? at(farthest, diagonal + 1) : at(farthest, diagonal - 1) + 1;
      while (x < firstSize && x - diagonal < secondSize &&
             first[static_cast<std::size_t>(x)] == second[static_cast<std::size_t>(x - diagonal)])
        ++x;
      at(farthest, diagonal) = x;
      isFound = x >= firstSize && x - diagonal >= secondSize;
    }
  }

  std::vector<TDiffStep> steps;
  Index x = firstSize;
  Index y = secondSize;
  const auto put = [&](TDiffStep::Kind kind) {
    steps.push_back({kind, static_cast<std::size_t>(x), static_cast<std::size_t>(y)});
  };
  for (Index change = changes - 1; change >= 0; --change) {
    const Index diagonal = x - y;
    std::vector<Index>& places = history[static_cast<std::size_t>(change)];
    const bool isDown = comesDown(places, diagonal, change);
    const Index startX = change == 0 ? 0 : isDown ? at(places, diagonal + 1) : at(places, diagonal - 1) + 1;
    while (x > startX) --x, --y, put(TDiffStep::Kind::Both);
    if (change == 0) break;
    if (isDown)
      --y, put(TDiffStep::Kind::SecondOnly);
    else
      --x, put(TDiffStep::Kind::FirstOnly);
  }
  std::reverse(steps.begin(), steps.end());
  return steps;
}

ExitCode CompareTraces(const TTraceOptions& options)
{
  TTraceFile a;
  TTraceFile b;
  if (!ReadTrace(a, options.file) || !ReadTrace(b, options.other)) return ExitCode::InputError;
  TDifferences differences;
  for (const auto& [first, second] : MatchThreads(a, b, options))
    CompareThreads(first, second, options.isResultsOnly, differences);

  std::string text;
  if (options.isJson) {
    text = JsonLine({{"same", differences.IsNone()},
                     {"calls_in_both", differences.calls},
                     {"only_in_first", differences.firstOnly},
                     {"only_in_second", differences.secondOnly},
                     {"other_answers", differences.answers},
                     {"repeats_in_first", differences.firstRepeats},
                     {"repeats_in_second", differences.secondRepeats},
                     {"first_difference", JsonTextOrNull(differences.first)}});
  } else if (differences.IsNone()) {
    text = "no difference in " + std::to_string(differences.calls) + " calls\n";
  } else {
    text = differences.first + "\n" + std::to_string(differences.calls) + " calls are in both traces, " +
           std::to_string(differences.answers) + " of them with other answers; " +
           std::to_string(differences.firstOnly) + " are only in " + options.file + ", " +
           std::to_string(differences.secondOnly) + " only in " + options.other + "\n";
  }
  if (!options.isJson && differences.firstRepeats + differences.secondRepeats > 0)
    text += "not counted, since they asked the same again or found no image: " +
            std::to_string(differences.firstRepeats) + " calls in " + options.file + ", " +
            std::to_string(differences.secondRepeats) + " in " + options.other + "\n";
  if (!Print(text)) return ExitCode::OutputError;
  return differences.IsNone() ? ExitCode::Success : ExitCode::CameraError;
}

} // namespace vxtool
