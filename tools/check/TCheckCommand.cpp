// SPDX-License-Identifier: MIT
// Chooses checks, runs them, reports.
#include "tools/check/TCheckCommand.h"

#include "tools/CameraList.h"
#include "tools/check/TKeptSettings.h"
#include "tools/Json.h"
#include "tools/NearestWord.h"
#include "tools/TFeatureDevice.h"
#include "tools/TFlatCamera.h"
#include "tools/TInterrupt.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <thread>

namespace vxtool {

namespace {

constexpr std::size_t kNameWidth = 28;
constexpr double kPerSecond = 1e5; ///< how exact times of a trace are given
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

// Standard error has it, too, when standard output is for a program: a crash then shows in which check it was.
void SayName(const TCheck& check)
{
  Say(check.FullName());
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

// A camera on a bus may come back after a moment.
std::string TCheckCommand::WhyGone() const
{
  constexpr std::chrono::seconds kPatience(2);
  ShutDown();
  const auto end = std::chrono::steady_clock::now() + kPatience;
  int code = VX_SUCCESS;
  do {
    TFeatureDevice device;
    code = device.Open(camera_);
    if (code == VX_SUCCESS) return "";
    std::this_thread::sleep_for(std::chrono::milliseconds(100)); // between looks
  } while (!TInterrupt::Happened() && std::chrono::steady_clock::now() < end);
  return FeatureCodeText("VX_Open", code);
}

bool TCheckCommand::HasFailed() const
{
  return std::any_of(done_.begin(), done_.end(), [](const TDone& done) { return !HasPassed(done.result); });
}

// What was expected, what it was and the last calls, line by line.
std::string TCheckCommand::Details(const TDone& done, const std::string& indent) const
{
  const TCheckResult& result = done.result;
  if (HasPassed(result)) return "";
  std::string text;
  const auto add = [&](const std::string& before, const std::string& line) {
    text.append(indent).append(before).append(line).append("\n");
  };
  add("rule: ", done.check->expected);
  if (!result.expected.empty()) {
    add("", result.reason);
    add("  expected: ", result.expected);
    add("  actual:   ", result.actual);
  }
  if (!result.calls.empty()) add("last calls:", "");
  for (const std::string& call : result.calls) add("  ", call);
  if (done.toSeconds > 0.0) {
    char times[64];
    std::snprintf(times, sizeof times, " --from %.5f --to %.5f", done.fromSeconds, done.toSeconds);
    add("all calls: ", "vxmcd trace print " + trace_.File() + times);
  }
  return text;
}

std::string TCheckCommand::ResultText(const TDone& done) const
{
  const TCheckResult& result = done.result;
  std::string text = VerdictName(result.verdict);
  if (result.verdict == Verdict::Skipped) text += " (" + result.reason + ")";
  if (result.verdict == Verdict::Warned) text += ": " + result.reason;
  if (result.verdict == Verdict::Unstable) text += ": failed, and passed when it was repeated";
  return text + "\n" + Details(done, kIndent);
}

std::string TCheckCommand::TapText(const TDone& done) const
{
  const TCheckResult& result = done.result;
  const std::string line =
      (HasPassed(result) ? "ok " : "not ok ") + std::to_string(done_.size()) + " - " + done.check->FullName();
  if (result.verdict == Verdict::Skipped) return line + " # SKIP " + result.reason + "\n";
  if (result.verdict == Verdict::Ok) return line + "\n";
  std::string text = line + "\n  ---\n  verdict: " + VerdictName(result.verdict) + "\n  details: |\n";
  if (result.expected.empty()) text += "    " + result.reason + "\n";
  return text + Details(done, "    ") + "  ...\n";
}

std::string TCheckCommand::VerdictText() const
{
  const auto count = [this](Verdict verdict) { return std::to_string(Count(verdict)); };
  std::string text =
      count(Verdict::Ok) + " ok, " + count(Verdict::Failed) + " failed, " + count(Verdict::Skipped) + " skipped";
  if (Count(Verdict::Unstable) > 0) text += ", " + count(Verdict::Unstable) + " unstable";
  if (Count(Verdict::Warned) > 0) text += ", " + count(Verdict::Warned) + " not carried out";
  if (!whyGone_.empty())
    text += "; the camera is gone, " + std::to_string(checks_.size() - done_.size()) + " not tried";
  return text + (isWhole_ ? "\n" : "; interrupted\n");
}

std::string TCheckCommand::ReportJson() const
{
  Json list = Json::array();
  for (const auto& [check, result, from, to] : done_) {
    list.push_back({{"group", check->group},
                    {"name", check->name},
                    {"description", check->expected},
                    {"verdict", VerdictName(result.verdict)},
                    {"reason", JsonTextOrNull(result.reason)},
                    {"expected", JsonTextOrNull(result.expected)},
                    {"actual", JsonTextOrNull(result.actual)},
                    {"calls", result.calls},
                    {"time_s", result.seconds},
                    {"trace_from_s", from},
                    {"trace_to_s", to}});
  }
  const bool hasTrace = (HasFailed() || !options_.bundle.file.empty()) && trace_.Seconds() > 0.0;
  return JsonLine({{"camera", camera_},
                   {"checks", list},
                   {"ok", Count(Verdict::Ok)},
                   {"failed", Count(Verdict::Failed)},
                   {"skipped", Count(Verdict::Skipped)},
                   {"unstable", Count(Verdict::Unstable)},
                   {"warnings", Count(Verdict::Warned)},
                   {"interrupted", !isWhole_},
                   {"gone", !whyGone_.empty()},
                   {"trace", JsonTextOrNull(hasTrace ? trace_.File() : "")}});
}

ExitCode TCheckCommand::RunAll()
{
  bool isPrinted = !options_.isTap || Print("TAP version 13\n1.." + std::to_string(checks_.size()) + "\n");
  const bool isText = !isJson_ && !options_.isTap;
  const auto add = [&](const std::string& text) {
    text_ += text;
    if (isText) isPrinted = Print(text) && isPrinted;
  };
  for (const TCheck* check : checks_) {
    if (!isText) SayName(*check);
    add(Padded(check->FullName(), kNameWidth));
    try {
      const double from = std::floor(trace_.Seconds() * kPerSecond) / kPerSecond;
      TCheckResult result = RunOften(*check);
      whyGone_ = HasPassed(result) ? "" : WhyGone();
      if (!whyGone_.empty()) {
        result.verdict = Verdict::Failed;
        result.reason = "the camera afterwards";
        result.expected = "can be opened";
        result.actual = whyGone_;
      }
      done_.push_back({check, result, from, std::ceil(trace_.Seconds() * kPerSecond) / kPerSecond});
    } catch (const TCheckContext::TInterrupted&) {
      add("interrupted\n");
      isWhole_ = false;
      break;
    }
    ++counts_[done_.back().result.verdict];
    add(ResultText(done_.back()));
    if (options_.isTap) isPrinted = Print(TapText(done_.back())) && isPrinted;
    if (!whyGone_.empty()) break;
  }
  ShutDown();
  add(VerdictText());
  if (isJson_) isPrinted = Print(ReportJson());
  if (options_.isTap)
    isPrinted = Print((isWhole_ && whyGone_.empty() ? "# " : "Bail out! ") + VerdictText()) && isPrinted;
  if (!isPrinted) return ExitCode::OutputError;
  const ExitCode code = HasFailed() ? ExitCode::CameraError : ExitCode::Success;
  return isWhole_ ? code : FirstOf(code, ExitCode::Interrupted);
}

bool TCheckCommand::MakeBundle(TBundle& bundle) const
{
  std::vector<TAttachedCamera> cameras;
  FindCameras(cameras);
  HideCameras(bundle.Redaction(), cameras);
  bundle.Add("check.txt", text_);
  bundle.Add("check.json", ReportJson());
  const std::string reason =
      trace_.Seconds() <= 0.0 ? "it could not be made" : bundle.AddTrace(trace_.NameInBundle(), trace_.File());
  if (!reason.empty()) Say("the call trace is left out: " + reason);
  if (!bundle.Close()) {
    Say("--bundle: " + bundle.Error());
    return false;
  }
  bundle.SayContents();
  return true;
}

ExitCode TCheckCommand::Run()
{
  if (!Choose()) return ExitCode::Usage;
  if (options_.isListing) return PrintList();
  TBundle bundle(options_.bundle.keepsNames);
  if (!options_.bundle.file.empty() && !bundle.Create(options_.bundle.file))
    return vxtool::Fail(ExitCode::OutputError, "--bundle: " + bundle.Error());
  if (const auto problem = WhyNoCamera(camera_)) return vxtool::Fail(ExitCode::NoCamera, *problem);
  TKeptSettings settings;
  if (const std::string problem = settings.Read(camera_); !problem.empty())
    return vxtool::Fail(ExitCode::NoCamera, problem);
  const TInterrupt interrupt;
  ExitCode code = RunAll();
  const std::string changed = settings.PutBack();
  if (!changed.empty()) Say(changed);
  if (HasFailed() && trace_.Seconds() > 0.0)
    if (const std::string reason = trace_.Keep(); !reason.empty()) Say("there is no call trace: " + reason);
  if (!options_.bundle.file.empty() && !MakeBundle(bundle)) code = FirstOf(code, ExitCode::OutputError);
  return code;
}

} // namespace vxtool
