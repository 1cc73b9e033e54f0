// SPDX-License-Identifier: MIT
// Runs the checks, reports, packs.
#include "tools/doctor/TDoctorCommand.h"

#include "tools/DescriptionReport.h"
#include "tools/doctor/DoctorAreas.h"
#include "tools/doctor/TBundle.h"
#include "tools/doctor/TRedaction.h"
#include "tools/Json.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <sstream>

namespace vxtool {

namespace {

constexpr std::streamoff kLogTailBytes = 200'000;

std::string Variable(const char* name)
{
  const char* const value = std::getenv(name); // NOLINT(concurrency-mt-unsafe): one thread
  return value ? value : "";
}

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

/// The log's file of "level:file"; "" when it goes to standard error.
std::string LogFile()
{
  const std::string log = Variable("VXMCD_LOG");
  const std::size_t colon = log.find(':');
  return colon == std::string::npos ? "" : log.substr(colon + 1);
}

std::string CountText(int count, const char* word)
{
  return std::to_string(count) + " " + word + (count == 1 ? "" : "s");
}

std::string Verdict(const TFindings& findings)
{
  const int problems = findings.Count(Severity::Problem);
  const int warnings = findings.Count(Severity::Warning);
  const std::string text = problems == 0 ? "no problems" : CountText(problems, "problem");
  return warnings == 0 ? text : text + ", " + CountText(warnings, "warning");
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

bool TDoctorCommand::MakeBundle()
{
  TRedaction redaction;
  if (!options_.keepsNames) {
    redaction = TRedaction::OfThisMachine();
    int number = 0;
    for (const TAttachedCamera& camera : facts_.cameras) {
      const std::string word = "<serial" + std::to_string(++number) + ">";
      redaction.Hide(camera.serialText.value_or(""), word);
      if (!camera.serial) continue;
      const std::string serial = std::to_string(*camera.serial); // as a mere number it may be a size, too
      redaction.Hide("serial number " + serial, "serial number " + word);
      redaction.Hide("\"serial\":" + serial, "\"serial\":null");
    }
  }
  TBundle bundle;
  bool isWhole = bundle.Create(options_.bundle);
  const auto add = [&](const std::string& name, const std::string& text) {
    if (isWhole && !text.empty()) isWhole = bundle.Add(name, redaction.Apply(text));
  };
  add("report.txt", ReportText(true));
  add("report.json", ReportJson());
  if (facts_.description) add("camera" + std::to_string(camera_) + ".json", DescriptionJson(*facts_.description));
  add("cameras.ini", TailOf(Variable("VXCORE_CONFIG"), kLogTailBytes));
  add("log.txt", TailOf(LogFile(), kLogTailBytes));
  if (!isWhole || !bundle.Close()) {
    Say("--bundle: " + bundle.Error());
    return false;
  }
  std::string names;
  for (const std::string& name : bundle.Names()) names += (names.empty() ? "" : ", ") + name;
  Say(options_.bundle + " has " + names + (options_.keepsNames ? "" : "; names and serial numbers are left out"));
  Say("look through it before you send it: tar -xzOf " + options_.bundle + " | less");
  return true;
}

ExitCode TDoctorCommand::Run()
{
  AskCameras();
  Check();
  const bool isPacked = options_.bundle.empty() || MakeBundle();
  if (!Print(isJson_ ? ReportJson() : ReportText(options_.showsAll)) || !isPacked) return ExitCode::OutputError;
  return findings_.Count(Severity::Problem) == 0 ? ExitCode::Success : ExitCode::CameraError;
}

} // namespace vxtool
