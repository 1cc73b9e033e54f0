// SPDX-License-Identifier: MIT
// The checks of cameras, on cameras that behave and on cameras with a fault each.
#include "tests/tools/FileReaders.h"
#include "tests/tools/ProgramRunner.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <gmock/gmock.h>
#include <nlohmann/json.hpp>
#include <set>

namespace vxtool {
namespace {

using nlohmann::json;
using ::testing::HasSubstr;
using ::testing::Not;
using TNames = std::set<std::string>;

/// Small images without noise, made when they are asked for.
constexpr const char* kQuick = "Scene = gradient\nNoise = off\nClock = free\n"
                               "[Camera0.SensorWidth]\nValue = 128\n[Camera0.SensorHeight]\nValue = 96\n";

class Check : public ToolProgram
{
protected:
  /// Starts all checks of a camera with these lines of configuration.
  FILE* Begin(const std::string& lines)
  {
    const std::string file = directory_.File(lines, "camera" + std::to_string(++begun_) + ".ini");
    return popen(("cd '" + directory_.Directory() + "' && VXCORE_CONFIG='" + file +
                  "' '" VXTOOL_PROGRAM "' check --json 2>/dev/null")
                     .c_str(),
                 "r");
  }
  static json ReportOf(FILE* program)
  {
    std::string text;
    char part[4096];
    while (std::fgets(part, sizeof part, program)) text += part;
    pclose(program);
    return json::parse(text);
  }
  static TNames WithVerdict(const json& report, const TNames& verdicts)
  {
    TNames names;
    for (const json& check : report["checks"])
      if (verdicts.count(check["verdict"]) > 0)
        names.insert(check["group"].get<std::string>() + "." + check["name"].get<std::string>());
    return names;
  }

private:
  int begun_ = 0;
};

TEST_F(Check, EveryModelBehaves)
{
  for (const auto& [model, skipped] :
       {std::pair<const char*, TNames>{"TRELLIS CMOS", {"cooling.states", "retrieve.overrun"}},
        {"RQ512_LX", {"area.tracks", "cooling.states", "retrieve.overrun"}},
        {"TARN 1M", {"cooling.states", "retrieve.overrun", "run.accumulate"}}}) {
    const json report = ReportOf(Begin(std::string("[Camera0]\nModel = ") + model + "\n" + kQuick));
    EXPECT_EQ(WithVerdict(report, {"FAIL", "unstable", "warn"}), TNames{}) << model << report;
    EXPECT_EQ(WithVerdict(report, {"skip"}), skipped) << model;
  }
}

struct TFault
{
  const char* rule;
  TNames failed;  ///< these checks and no other
  TNames mayFail; ///< those that may meet a fault of single frames, which are not the same in each run
};

TEST_F(Check, FindsEachFault)
{
  const std::vector<TFault> faults = {
      {"call VX_GetString feature CameraModel rc 3", {"describe.identity"}, {}},
      {"call VX_GetFloat feature ReadoutTime out -1", {"describe.timings"}, {}},
      {"call VX_SetFloat feature ExposureTime rc 6", {"settings.exposure", "settings.exposure-limits"}, {}},
      {"call VX_SetFloat feature FrameRate rc 6", {"settings.cycle"}, {}},
      {"call VX_SetEnumeratedString feature TriggerMode rc 5",
       {"settings.trigger-modes", "run.software-trigger", "core.words"},
       {}},
      {"call VX_IsWritable feature AOIWidth out 1", {"settings.in-run"}, {}},
      {"call VX_GetBool feature BaselineClamp out 1", {"settings.baseline"}, {}},
      {"call VX_SetInt feature AOICount rc 5", {"area.tracks"}, {}},
      {"call VX_SetInt feature FrameCount rc 6", {"run.series"}, {}},
      {"call VX_Command feature SoftwareTrigger every 3 rc 0", {"run.software-trigger"}, {}},
      {"call VX_SetFloat feature TargetSensorTemperature rc 0", {"cooling.range"}, {}},
      {"frame every 41 drop", {"run.series", "run.no-gaps"}, {"run.software-trigger"}},
      {"frame every 41 null", {"run.series", "run.no-gaps"}, {"core.buffers", "run.software-trigger"}},
      {"frame every 41 foreign", {"run.series", "run.no-gaps"}, {"core.buffers", "run.software-trigger"}},
      {"frame every 41 short 100", {"run.clock"}, {"core.buffers"}},
      {"frame every 41 repeat", {"run.series"}, {"core.buffers", "retrieve.agree", "run.software-trigger"}},
      {"frame every 5 swap 2", {"core.buffers"}, {}},
      {"frame any oversize 8", {"core.buffers"}, {}},
      {"chunk every 13 len 0xFFFFFFFC", {"run.clock"}, {}},
      {"chunk any cid 9", {"run.clock"}, {}},
      {"chunk any truncated", {"run.clock"}, {}},
      {"chunk every 13 random 7", {"run.clock"}, {}},
      {"value SensorTemperature set nan", {"cooling.temperature", "core.kinds"}, {}},
      {"call VX_GetString feature CameraModel unterminated", {"core.texts"}, {}},
      {"call VX_Command feature AcquisitionStop rc 13 delay 1ms", {"run.abort"}, {}},
      {"camera every 20 stall 20ms", {"run.no-gaps"}, {}},
  };
  constexpr std::size_t kAtOnce = 7;
  for (std::size_t first = 0; first < faults.size(); first += kAtOnce) {
    std::vector<FILE*> programs;
    for (std::size_t at = first; at < std::min(first + kAtOnce, faults.size()); ++at)
      programs.push_back(
          Begin(std::string("[Camera0]\n") + kQuick + "[Faults]\nRule = " + faults[at].rule + "\n"));
    for (std::size_t at = 0; at < programs.size(); ++at) {
      const TFault& fault = faults[first + at];
      const json report = ReportOf(programs[at]);
      TNames failed = WithVerdict(report, {"FAIL", "unstable"});
      for (const std::string& name : fault.mayFail) failed.erase(name);
      EXPECT_EQ(failed, fault.failed) << fault.rule << "\n" << report.dump(1);
    }
  }
}

TEST_F(Check, EndsWhenTheCameraIsGone)
{
  const auto begin = [this](const char* rule) {
    return Begin(std::string("[Camera0]\n") + kQuick + "[Faults]\nRule = camera at 50 " + rule + "\n");
  };
  FILE* const first = begin("unplug");
  FILE* const second = begin("replug 300ms");
  const json gone = ReportOf(first);
  const json back = ReportOf(second);
  EXPECT_EQ(gone["gone"], true);
  EXPECT_EQ(WithVerdict(gone, {"FAIL", "unstable", "warn"}).size(), 1U) << gone;
  EXPECT_EQ(gone["checks"].back()["actual"], "VX_Open: 53: the camera does not answer");
  EXPECT_EQ(back["gone"], false);
  EXPECT_EQ(WithVerdict(back, {"FAIL", "unstable", "warn"}).size(), 1U) << back;
}

TEST_F(Check, ReportsWhatWasExpectedAndTheLastCalls)
{
  Configure(std::string("[Camera0]\n") + kQuick +
            "[Faults]\nRule = call VX_GetBool feature BaselineClamp out 1\n");
  const TOutcome text = Run({"check", "--only", "baseline,describe.versions"});
  EXPECT_EQ(text.exitCode, 3);
  EXPECT_THAT(text.output, HasSubstr("describe.versions           ok\nsettings.baseline           FAIL\n"
                                     "      rule: the baseline clamp reads back\n"
                                     "      the baseline clamp that was set\n"
                                     "        expected: 0\n        actual:   1\n      last calls:\n"));
  EXPECT_THAT(text.output,
              HasSubstr("        SetBaselineClamp(0) = 20002 RC_SUCCESS\n"
                        "        GetBaselineClamp(1) = 20002 RC_SUCCESS\n      all calls: vxmcd trace print "));
  EXPECT_THAT(text.output, ::testing::EndsWith("\n1 ok, 1 failed, 0 skipped\n"));
  const TOutcome tap = Run({"check", "--only", "baseline,states", "--tap"});
  EXPECT_THAT(tap.output, HasSubstr("1..2\nnot ok 1 - settings.baseline\n  ---\n  verdict: FAIL\n"));
  EXPECT_THAT(tap.output, HasSubstr("\nok 2 - cooling.states # SKIP "));
  EXPECT_THAT(Run({"check", "--list", "--group", "wait"}).output, HasSubstr("wait.cancel  "));
  EXPECT_THAT(Run({"check", "--only", "run.serie"}).errors, HasSubstr("the nearest is run.series"));
  EXPECT_EQ(Run({"check", "--camera", "3"}).exitCode, 2);
  Configure("[Camera0]\nAmbient = -32\n");
  EXPECT_THAT(Run({"check", "--harsh", "--only", "states"}).output,
              HasSubstr("skip (the sensor is almost as cold"));
}

TEST_F(Check, KeepsTheTraceOfAFailure)
{
  Configure(std::string("[Camera0]\n") + kQuick +
            "[Faults]\nRule = call VX_GetBool feature BaselineClamp out 1\n");
  const auto traces = [this] {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(directory_.Directory()))
      if (entry.path().filename().string().starts_with("vxmcd-check-")) names.push_back(entry.path().filename());
    return names;
  };
  EXPECT_EQ(Run({"check", "--only", "unknown", "--bundle", "right.tar.gz"}).exitCode, 0);
  EXPECT_EQ(Run({"check", "--camera", "serial:1"}).exitCode, 2);
  EXPECT_EQ(traces(), std::vector<std::string>{});
  const json report =
      json::parse(Run({"check", "--only", "cycle,baseline,overlap", "--bundle", "wrong.tar.gz", "--json"}).output);
  EXPECT_EQ(traces(), std::vector<std::string>{report["trace"]});
  const json check = report["checks"][1];
  const TOutcome calls = Run({"trace", "print", "--api", report["trace"], "--from", check["trace_from_s"].dump(),
                              "--to", check["trace_to_s"].dump()});
  EXPECT_THAT(calls.output, HasSubstr("SetBaselineClamp(state=0)"));
  EXPECT_THAT(calls.output, Not(HasSubstr("SetOverlapMode")));
  const std::string list =
      "tar -tzf '" + directory_.Path("wrong.tar.gz") + "' > '" + directory_.Path("list") + "'";
  EXPECT_EQ(std::system(list.c_str()), 0);
  EXPECT_EQ(TextOf(directory_.Path("list")),
            "check.txt\ncheck.json\n" + report["trace"].get<std::string>() + "\nmanifest.json\n");
}

TEST_F(Check, EndsAtCtrlC)
{
  Configure(std::string("[Camera0]\n") + kQuick);
  const pid_t child = LaunchUntil({"check", "--group", "run", "--repeat", "200"}, [this] {
    return TextOf(directory_.Path("out")).find("run.series") != std::string::npos;
  });
  EXPECT_THAT(Interrupt(child).output, HasSubstr("interrupted\n0 ok, 0 failed, 0 skipped; interrupted\n"));
}

} // namespace
} // namespace vxtool
