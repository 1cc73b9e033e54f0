// SPDX-License-Identifier: MIT
// Compares two traces.
#include "tools/TraceDiff.h"

#include "tools/TraceText.h"

#include <algorithm>
#include <cstdint>

namespace vxtool {

namespace {

// Beyond as many calls that only one of the traces has, they are of different programs.
constexpr std::size_t kMaxChanges = 2000;
// As many calls stand before the first difference, and belong to it at most.
constexpr std::size_t kCallsBefore = 5;

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

struct TDifferences
{
  std::size_t calls = 0; ///< in both
  std::size_t firstOnly = 0;
  std::size_t secondOnly = 0;
  std::size_t answers = 0;
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

void CompareThreads(const TCalls& first, const TCalls& second, bool isResultsOnly, TDifferences& differences)
{
  std::vector<std::string> firstKeys;
  std::vector<std::string> secondKeys;
  for (const TTraceCall* const call : first) firstKeys.push_back(KeyOf(*call));
  for (const TTraceCall* const call : second) secondKeys.push_back(KeyOf(*call));
  const auto steps = ShortestDiff(firstKeys, secondKeys, kMaxChanges);
  if (steps.empty() && !(first.empty() && second.empty())) {
    differences.firstOnly += first.size();
    differences.secondOnly += second.size();
    if (differences.IsNone()) differences.first = "the traces have hardly a call in common\n";
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
                     {"first_difference", JsonTextOrNull(differences.first)}});
  } else if (differences.IsNone()) {
    text = "no difference in " + std::to_string(differences.calls) + " calls\n";
  } else {
    text = differences.first + "\n" + std::to_string(differences.calls) + " calls are in both traces, " +
           std::to_string(differences.answers) + " of them with other answers; " +
           std::to_string(differences.firstOnly) + " are only in " + options.file + ", " +
           std::to_string(differences.secondOnly) + " only in " + options.other + "\n";
  }
  if (!Print(text)) return ExitCode::OutputError;
  return differences.IsNone() ? ExitCode::Success : ExitCode::CameraError;
}

} // namespace vxtool
