// SPDX-License-Identifier: MIT
// Chooses checks, runs them, reports.
#include "tools/check/TCheckCommand.h"

#include "tools/check/TKeptSettings.h"
#include "tools/Json.h"
#include "tools/NearestWord.h"
#include "tools/TFlatCamera.h"
#include "tools/TInterrupt.h"

#include <algorithm>

namespace vxtool {

namespace {

constexpr std::size_t kNameWidth = 28;
constexpr const char* kIndent = "      ";

bool IsIn(const std::vector<std::string>& words, const std::string& word)
{
  return std::find(words.begin(), words.end(), word) != words.end();
}

bool IsNamed(const TCheck& check, const std::string& name)
{
  return check.name == name || check.FullName() == name;
}

bool HasPassed(const TCheckResult& result)
{
  return result.verdict == Verdict::Ok || result.verdict == Verdict::Skipped;
}

// What was expected, what came and the last calls, line by line.
std::string Details(const TCheckResult& result, const std::string& indent)
{
  std::string text;
  const auto add = [&](const std::string& before, const std::string& line) {
    text.append(indent).append(before).append(line).append("\n");
  };
  if (!result.expected.empty()) {
    add("", result.reason);
    add("  expected: ", result.expected);
    add("  came:     ", result.came);
  }
  if (!result.calls.empty()) add("last calls:", "");
  for (const std::string& call : result.calls) add("  ", call);
  return text;
}

// Standard error has it, too, when standard output is for a program: a crash then shows in which check it was.
void SayName(const TCheck& check)
{
  Say(check.FullName());
}

Json ResultJson(const TCheck& check, const TCheckResult& result)
{
  return {{"group", check.group},
          {"name", check.name},
          {"description", check.expected},
          {"verdict", VerdictName(result.verdict)},
          {"reason", JsonTextOrNull(result.reason)},
          {"expected", JsonTextOrNull(result.expected)},
          {"came", JsonTextOrNull(result.came)},
          {"calls", result.calls},
          {"time_s", result.seconds}};
}

std::string TapLine(std::size_t number, const TCheck& check, const TCheckResult& result)
{
  const std::string line =
      (HasPassed(result) ? "ok " : "not ok ") + std::to_string(number) + " - " + check.FullName();
  if (result.verdict == Verdict::Skipped) return line + " # SKIP " + result.reason + "\n";
  if (result.verdict == Verdict::Ok) return line + "\n";
  std::string text = line + "\n  ---\n  verdict: " + VerdictName(result.verdict) + "\n  details: |\n";
  if (result.expected.empty()) text += "    " + result.reason + "\n";
  return text + Details(result, "    ") + "  ...\n";
}

} // namespace

bool TCheckCommand::Choose()
{
  for (const std::string& name : options_.names) {
    std::vector<std::string> names;
    for (const TCheck& check : AllChecks()) names.push_back(check.FullName());
    const auto isMeant = [&name](const TCheck& check) { return IsNamed(check, name); };
    if (std::any_of(AllChecks().begin(), AllChecks().end(), isMeant)) continue;
    const std::string nearest = NearestWord(name, names);
    Say("--only: there is no check " + name + "; " +
        (nearest.empty() ? "vxmcd check --list names them" : "the nearest is " + nearest));
    return false;
  }
  for (const TCheck& check : AllChecks()) {
    const auto isNamed = [&check](const std::string& name) { return IsNamed(check, name); };
    if (!options_.groups.empty() && !IsIn(options_.groups, check.group)) continue;
    if (!options_.names.empty() && std::none_of(options_.names.begin(), options_.names.end(), isNamed)) continue;
    checks_.push_back(&check);
  }
  if (checks_.empty()) Say("--only: no such check is in these groups");
  return !checks_.empty();
}

ExitCode TCheckCommand::PrintList() const
{
  std::string text;
  Json list = Json::array();
  for (const TCheck* check : checks_) {
    text += Padded(check->FullName(), kNameWidth) + check->expected + (check->isHarsh ? " (--harsh)" : "") + "\n";
    list.push_back({{"group", check->group},
                    {"name", check->name},
                    {"description", check->expected},
                    {"harsh", check->isHarsh}});
  }
  return Print(isJson_ ? JsonLine({{"checks", list}}) : text) ? ExitCode::Success : ExitCode::OutputError;
}

TCheckResult TCheckCommand::RunOften(const TCheck& check) const
{
  TCheckResult result;
  if (check.isHarsh && !options_.isHarsh) {
    result.verdict = Verdict::Skipped;
    result.reason = "changes the temperature or takes minutes: only with --harsh";
    return result;
  }
  for (int run = 0; run < options_.repeat && HasPassed(result); ++run)
    result = RunCheck(check, camera_, options_.isHarsh);
  if (HasPassed(result)) return result;
  TCheckResult again = RunCheck(check, camera_, options_.isHarsh);
  if (result.verdict == Verdict::Warned && again.verdict == Verdict::Failed) return again;
  if (result.verdict == Verdict::Failed && again.verdict == Verdict::Ok) result.verdict = Verdict::Unstable;
  return result;
}

bool TCheckCommand::PrintResult(const TDone& done) const
{
  if (isJson_) return true;
  if (options_.isTap) return Print(TapLine(done_.size(), *done.check, done.result));
  const TCheckResult& result = done.result;
  std::string text = VerdictName(result.verdict);
  if (result.verdict == Verdict::Skipped) text += " (" + result.reason + ")";
  if (result.verdict == Verdict::Warned) text += ": " + result.reason;
  if (result.verdict == Verdict::Unstable) text += ": failed, and passed when it was repeated";
  return Print(text + "\n" + Details(result, kIndent));
}

bool TCheckCommand::PrintVerdict(bool isWhole) const
{
  const auto count = [this](Verdict verdict) {
    const auto found = counts_.find(verdict);
    return found == counts_.end() ? 0 : found->second;
  };
  if (isJson_) {
    Json list = Json::array();
    for (const TDone& done : done_) list.push_back(ResultJson(*done.check, done.result));
    return Print(JsonLine({{"camera", camera_},
                           {"checks", list},
                           {"ok", count(Verdict::Ok)},
                           {"failed", count(Verdict::Failed)},
                           {"skipped", count(Verdict::Skipped)},
                           {"unstable", count(Verdict::Unstable)},
                           {"warnings", count(Verdict::Warned)},
                           {"interrupted", !isWhole}}));
  }
  std::string text = std::to_string(count(Verdict::Ok)) + " ok, " + std::to_string(count(Verdict::Failed)) +
                     " failed, " + std::to_string(count(Verdict::Skipped)) + " skipped";
  if (count(Verdict::Unstable) > 0) text += ", " + std::to_string(count(Verdict::Unstable)) + " unstable";
  if (count(Verdict::Warned) > 0) text += ", " + std::to_string(count(Verdict::Warned)) + " not carried out";
  if (!isWhole) text += "; interrupted";
  if (options_.isTap) text = (isWhole ? "# " : "Bail out! ") + text;
  return Print(text + "\n");
}

ExitCode TCheckCommand::RunAll()
{
  bool isPrinted = !options_.isTap || Print("TAP version 13\n1.." + std::to_string(checks_.size()) + "\n");
  bool isWhole = true;
  for (const TCheck* check : checks_) {
    if (isJson_ || options_.isTap)
      SayName(*check);
    else
      isPrinted = Print(Padded(check->FullName(), kNameWidth)) && isPrinted;
    try {
      done_.push_back({check, RunOften(*check)});
    } catch (const TCheckContext::TInterrupted&) {
      if (!isJson_ && !options_.isTap) Print("interrupted\n");
      isWhole = false;
      break;
    }
    ++counts_[done_.back().result.verdict];
    isPrinted = PrintResult(done_.back()) && isPrinted;
  }
  ShutDown();
  ExitCode code = std::all_of(done_.begin(), done_.end(), [](const TDone& done) { return HasPassed(done.result); })
                      ? ExitCode::Success
                      : ExitCode::CameraError;
  if (!isWhole) code = FirstOf(code, ExitCode::Interrupted);
  return isPrinted && PrintVerdict(isWhole) ? code : ExitCode::OutputError;
}

ExitCode TCheckCommand::Run()
{
  if (!Choose()) return ExitCode::Usage;
  if (options_.isListing) return PrintList();
  if (const auto problem = WhyNoCamera(camera_)) return vxtool::Fail(ExitCode::NoCamera, *problem);
  TKeptSettings settings;
  if (const std::string problem = settings.Read(camera_); !problem.empty())
    return vxtool::Fail(ExitCode::NoCamera, problem);
  const TInterrupt interrupt;
  const ExitCode code = RunAll();
  const std::string changed = settings.PutBack();
  if (!changed.empty()) Say("these settings of the camera are not what they were: " + changed);
  return code;
}

} // namespace vxtool
