// SPDX-License-Identifier: MIT
// Runs the checks, reports, packs.
#include "tools/doctor/TDoctorCommand.h"

#include "tools/DescriptionReport.h"
#include "tools/doctor/DoctorAreas.h"
#include "tools/Environment.h"
#include "tools/Json.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <functional>
#include <sstream>

namespace vxtool {

namespace {

constexpr std::streamoff kLogTailBytes = 200'000;
constexpr std::streamoff kReportBytes = 10'000'000; ///< one line of JSON

/// The end of a file from the beginning of a line; "" when it cannot be read.
std::string TailOf(const std::string& path, std::streamoff bytes)
{
  std::ifstream file(path, std::ios::binary | std::ios::ate);
  if (!file) return "";
  const std::streamoff length = file.tellg();
  file.seekg(std::max<std::streamoff>(0, length - bytes));
  std::string skipped;
  if (length > bytes) std::getline(file, skipped);
  std::ostringstream text;
  text << file.rdbuf();
  return text.str();
}

std::string Verdict(const TFindings& findings)
{
  const int problems = findings.Count(Severity::Problem);
  const int warnings = findings.Count(Severity::Warning);
  const std::string text = problems == 0 ? "no problems" : CountText(problems, "problem");
  return warnings == 0 ? text : text + ", " + CountText(warnings, "warning");
}

/// Of the working directory, where the tool puts them; "" when there is none.
std::string NewestTrace()
{
  namespace fs = std::filesystem;
  std::string newest;
  fs::file_time_type newestTime;
  std::error_code error;
  for (const auto& entry : fs::directory_iterator(".", error)) {
    if (entry.path().extension() != ".vxtr" || !entry.is_regular_file(error)) continue;
    const fs::file_time_type time = entry.last_write_time(error);
    if (error || (!newest.empty() && time <= newestTime)) continue;
    newest = entry.path().filename().string();
    newestTime = time;
  }
  return newest;
}

bool SayNoBundle(const std::string& reason)
{
  Say("--bundle: " + reason);
  return false;
}

} // namespace

void TDoctorCommand::AskCameras()
{
  facts_.listCode = FindCameras(facts_.cameras);
  if (facts_.listCode != RC_SUCCESS || facts_.cameras.empty()) return;
  if (open_.Open(camera_))
    facts_.description = DescribeOpenCamera(camera_);
  else
    facts_.openError = open_.Error();
}

void TDoctorCommand::Check()
{
  const std::function<void()> checks[] = {
      // in the order of kDoctorAreas
      [this] { CheckLibraries(findings_); },
      [this] { CheckCameras(findings_, facts_, camera_); },
      [this] { CheckPermissions(findings_); },
      [this] { CheckLimits(findings_, facts_); },
      [this] { CheckDisk(findings_, facts_, options_.disk.value_or(".")); },
      [this] { CheckTiming(findings_, facts_.description ? &open_ : nullptr); },
      [this] { CheckPython(findings_); },
  };
  static_assert(std::size(checks) == kDoctorAreas.size());
  const std::vector<std::string>& wanted = options_.areas;
  const std::function<void()>* check = checks;
  for (const std::string area : kDoctorAreas) {
    const bool isWanted = wanted.empty() ? area != "disk" || options_.disk
                                         : std::find(wanted.begin(), wanted.end(), area) != wanted.end();
    findings_.BeginArea(area);
    if (isWanted) (*check)();
    ++check;
  }
}

std::string TDoctorCommand::ReportText(bool showsAll) const
{
  std::string text;
  for (const TFinding& finding : findings_.All()) {
    if (finding.severity == Severity::Right && !showsAll) continue;
    text +=
        Padded(SeverityName(finding.severity), sizeof "problem") + " " + finding.area + ": " + finding.text + "\n";
    if (!finding.cure.empty()) text += "         cure: " + finding.cure + "\n";
  }
  return text + Verdict(findings_) + "\n";
}

std::string TDoctorCommand::ReportJson() const
{
  Json list = Json::array();
  for (const TFinding& finding : findings_.All())
    list.push_back({{"area", finding.area},
                    {"severity", SeverityName(finding.severity)},
                    {"text", finding.text},
                    {"cure", JsonTextOrNull(finding.cure)}});
  return JsonLine({{"findings", list},
                   {"problems", findings_.Count(Severity::Problem)},
                   {"warnings", findings_.Count(Severity::Warning)}});
}

bool TDoctorCommand::MakeBundle(TBundle& bundle) const
{
  HideCameras(bundle.Redaction(), facts_.cameras);
  if (options_.disk) bundle.Redaction().LearnPath(*options_.disk);
  bundle.Add("report.txt", ReportText(true));
  bundle.Add("report.json", ReportJson());
  if (facts_.description)
    bundle.Add("camera" + std::to_string(camera_) + ".json", DescriptionJson(*facts_.description));
  bundle.Add("cameras.ini", TailOf(Variable("VXCORE_CONFIG"), kLogTailBytes));
  bundle.Add("log.txt", TailOf(LogFile(), kLogTailBytes));
  bundle.Add("check.json", TailOf("check.json", kReportBytes));
  const std::string trace = options_.trace.empty() ? NewestTrace() : options_.trace;
  const std::string reason = trace.empty() ? "" : bundle.AddTrace("trace.vxtr", trace);
  if (!reason.empty() && !options_.trace.empty()) return SayNoBundle("--trace: " + reason);
  if (!reason.empty()) Say("the trace is left out: " + reason);
  if (!bundle.Close()) return SayNoBundle(bundle.Error());
  if (!trace.empty() && reason.empty()) Say("trace.vxtr is " + trace);
  bundle.SayContents();
  return true;
}

ExitCode TDoctorCommand::Run()
{
  TBundle bundle(options_.bundle.keepsNames);
  if (!options_.bundle.file.empty() && !bundle.Create(options_.bundle.file))
    return Fail(ExitCode::OutputError, "--bundle: " + bundle.Error());
  AskCameras();
  Check();
  const bool isPacked = options_.bundle.file.empty() || MakeBundle(bundle);
  if (!Print(isJson_ ? ReportJson() : ReportText(options_.showsAll)) || !isPacked) return ExitCode::OutputError;
  return findings_.Count(Severity::Problem) == 0 ? ExitCode::Success : ExitCode::CameraError;
}

} // namespace vxtool
