// SPDX-License-Identifier: MIT
// The commands for call traces, with a trace of the program itself.
#include "runs/checksum.h"
#include "tests/tools/ProgramRunner.h"

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

namespace vxtool {
namespace {

using nlohmann::json;
using ::testing::HasSubstr;
using ::testing::Not;

class ToolTrace : public ToolProgram
{
protected:
  std::string Path(const std::string& name) const { return directory_.Path(name); }

  /// Records a run of a few images, with its trace in the file @p name.
  TOutcome Record(const std::string& name, const std::string& exposure = "0.002",
                  const std::vector<std::string>& more = {})
  {
    std::vector<std::string> arguments = {"trace", "record", "-o", Path(name), "--",     VXTOOL_PROGRAM, "acquire",
                                          "-n",    "3",      "-e", exposure,   "--area", "1,1,64x64"};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return Run(arguments);
  }

  std::vector<json> Calls(const std::string& name, const std::vector<std::string>& filter = {})
  {
    std::vector<std::string> arguments = {"trace", "print", "--json", Path(name)};
    arguments.insert(arguments.end(), filter.begin(), filter.end());
    const TOutcome outcome = Run(arguments);
    EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
    std::vector<json> calls;
    std::istringstream lines(outcome.output);
    for (std::string line; std::getline(lines, line);) calls.push_back(json::parse(line));
    return calls;
  }

  json Statistics(const std::string& name)
  {
    return json::parse(Run({"trace", "stats", "--json", Path(name)}).output);
  }
};

TEST_F(ToolTrace, RecordsAProgramAndSaysWhatItDid)
{
  Configure(kSmallCamera);
  const TOutcome outcome = Record("a.vxtr");
  EXPECT_EQ(outcome.exitCode, 0);
  EXPECT_THAT(outcome.errors, HasSubstr("a.vxtr: "));
  EXPECT_THAT(outcome.errors, HasSubstr(" calls of vxmcd in 1 thread,"));

  const auto exposure = Calls("a.vxtr", {"--function", "Set*Time", "--api"});
  ASSERT_FALSE(exposure.empty());
  EXPECT_EQ(exposure[0]["function"], "SetExposureTime");
  EXPECT_EQ(exposure[0]["arguments"], (json{{"seconds", 0.002}}));
  EXPECT_EQ(exposure[0]["result"], 20002);
  const std::string text = Run({"trace", "print", Path("a.vxtr")}).output;
  EXPECT_THAT(text, HasSubstr(" T1 SetExposureTime(seconds=0.002) = 20002 RC_SUCCESS  "));
  EXPECT_THAT(text, HasSubstr(" T1   VX_SetFloat("));
  EXPECT_THAT(text, HasSubstr(", \"ExposureTime\", 0.002"));

  const json statistics = Statistics("a.vxtr");
  EXPECT_EQ(statistics["program"], "vxmcd");
  EXPECT_EQ(statistics["runs"][0]["frames"], 3);
  EXPECT_EQ(statistics["runs"][0]["images_copied"], 3);
  EXPECT_EQ(statistics["remarks"], json::array());
  EXPECT_EQ(Run({"trace", "print", directory_.File("no trace")}).exitCode, 6);
}

TEST_F(ToolTrace, EndsAsTheProgramAndNamesTheFilesOfItsProcesses)
{
  Configure(kSmallCamera);
  const std::string twice = std::string(VXTOOL_PROGRAM) + " list; " + VXTOOL_PROGRAM + " info >&2; exit 7";
  const TOutcome outcome = Run({"trace", "record", "-o", Path("b.vxtr"), "sh", "-c", twice});
  EXPECT_EQ(outcome.exitCode, 7);
  EXPECT_FALSE(Calls("b.vxtr").empty());
  EXPECT_THAT(Calls("b-2.vxtr", {"--api"}).front()["function"], "GetAvailableCameras");
  EXPECT_EQ(Run({"trace", "record", "-o", Path("c.vxtr"), "sh", "-c", "kill -9 $$"}).exitCode, 128 + 9);
  EXPECT_THAT(Run({"trace", "record", "-o", Path("c.vxtr"), "true"}).errors, HasSubstr("made no trace"));
  EXPECT_EQ(Run({"trace", "record", "-o", Path("c.vxtr"), "/no/such/program"}).exitCode, 127);
  EXPECT_EQ(Run({"trace", "record", "-o", directory_.File("precious"), "true"}).exitCode, 4);
}

TEST_F(ToolTrace, SaysWhatTheCameraRefusedBehindASuccess)
{
  Configure(std::string(kSmallCamera) + "[Faults]\nRule = call VX_SetInt feature AOILeft rc 5\n");
  Record("d.vxtr");
  EXPECT_THAT(
      Statistics("d.vxtr")["remarks"].dump(),
      HasSubstr("SetImage() answered RC_SUCCESS, though the camera refused AOILeft with 5 VX_ERR_NOT_WRITABLE"));
  EXPECT_THAT(Run({"trace", "print", "--errors", Path("d.vxtr")}).output, HasSubstr("= 5 VX_ERR_NOT_WRITABLE"));
}

TEST_F(ToolTrace, ComparesWhatTwoRunsDid)
{
  Configure(kSmallCamera);
  for (const char* const name : {"e.vxtr", "f.vxtr"})
    Run({"trace", "record", "-o", Path(name), VXTOOL_TRACED_PROGRAM, "image"});
  const TOutcome same = Run({"trace", "diff", "--api", Path("e.vxtr"), Path("f.vxtr")});
  EXPECT_EQ(same.exitCode, 0);
  EXPECT_THAT(same.output, ::testing::StartsWith("no difference in "));
  EXPECT_THAT(same.output, HasSubstr("\nnot counted, "));
  EXPECT_THAT(Run({"trace", "config", Path("e.vxtr")}).output, Not(HasSubstr("[Faults]"))); // only of the run
  EXPECT_THAT(Run({"trace", "replay", "--json", Path("e.vxtr")}).output, HasSubstr("\"not_replayed\":[],"));

  Configure(std::string(kSmallCamera) + "[Faults]\nRule = call VX_SetFloat feature ExposureTime rc 6\n");
  Run({"trace", "record", "-o", Path("g.vxtr"), VXTOOL_TRACED_PROGRAM, "image"});
  const TOutcome other = Run({"trace", "diff", "--api", Path("e.vxtr"), Path("g.vxtr")});
  EXPECT_EQ(other.exitCode, 3);
  EXPECT_THAT(other.output, HasSubstr("< T1 SetExposureTime(seconds=10) = 20002 RC_SUCCESS\n"
                                      "> T1 SetExposureTime(seconds=10) = 20066 RC_P1_INVALID\n"));
}

TEST_F(ToolTrace, RedactsTheSameEverywhere)
{
  Configure(kSmallCamera);
  const std::string folder = Path("secret");
  Record("h.vxtr", "0.002", {"--spool", folder});
  ASSERT_THAT(TextOf(Path("h.vxtr")), HasSubstr(folder));
  ASSERT_THAT(TextOf(Path("h.vxtr")), HasSubstr("RQ-20417"));
  const TOutcome outcome = Run({"trace", "redact", Path("h.vxtr"), Path("i.vxtr")});
  EXPECT_EQ(outcome.exitCode, 0);
  EXPECT_THAT(outcome.output, HasSubstr(" " + folder + "\n"));
  const std::string text = TextOf(Path("i.vxtr"));
  EXPECT_THAT(text, Not(HasSubstr("RQ-20417")));
  EXPECT_THAT(text, Not(HasSubstr(directory_.Directory())));
  EXPECT_THAT(Calls("i.vxtr", {"--function", "SetSpool"}).front()["arguments"]["path"].get<std::string>(),
              ::testing::MatchesRegex("<path[0-9]>"));
  EXPECT_EQ(Calls("i.vxtr").size(), Calls("h.vxtr").size());
}

TEST_F(ToolTrace, MakesCamerasLikeThoseOfTheTrace)
{
  Configure(std::string(kSmallCamera) +
            "[Camera0.CameraModel]\nValue = OTHER\n[Camera0.SensorWidth]\nValue = 640\n"
            "[Camera0.FanSpeed]\nTexts = Off | Turbo\n[Faults]\n"
            "Rule = call VX_GetInt feature BaselineLevel rc 53\n");
  const auto record = [this](const char* name) {
    return Run({"trace", "record", "-o", Path(name), VXTOOL_PROGRAM, "info"});
  };
  record("k.vxtr");
  const TOutcome config = Run({"trace", "config", Path("k.vxtr")});
  EXPECT_EQ(config.exitCode, 0);
  for (const char* const line :
       {"Model = RQ512_LX\n", "[Camera0.SensorWidth]\nValue = 640\n", "Texts = Off | Turbo\n"})
    EXPECT_THAT(config.output, HasSubstr(line));
  Configure(config.output);
  record("l.vxtr");
  EXPECT_THAT(Run({"trace", "diff", Path("k.vxtr"), Path("l.vxtr")}).output,
              ::testing::StartsWith("no difference in "));

  // Limits that depend on other settings, and a second camera that the program only counts.
  Configure("[Simulator]\nCameras = 2\n[Camera0]\nModel = TARN 1M\nScene = counter\n");
  Run({"trace", "record", "-o", Path("r.vxtr"), VXTOOL_PROGRAM, "check", "--group", "settings"});
  const TOutcome replay = Run({"trace", "replay", "--like-recorded", Path("r.vxtr")});
  EXPECT_EQ(replay.exitCode, 0) << replay.output;
}

TEST_F(ToolTrace, MakesTheCallsAgain)
{
  Configure(kSteadyCamera);
  const std::string folder = Path("spooled");
  Record("m.vxtr", "0.02", {"--spool", folder});
  std::filesystem::remove_all(folder);
  EXPECT_EQ(Run({"trace", "replay", Path("m.vxtr")}).exitCode, 0);
  EXPECT_FALSE(std::filesystem::exists(folder)); // which a replay could replace

  Run({"trace", "record", "-o", Path("n.vxtr"), VXTOOL_PROGRAM, "info"});
  EXPECT_THAT(Run({"trace", "replay", "-o", Path("o.vxtr"), Path("n.vxtr")}).output,
              HasSubstr("no difference in "));
  const TOutcome diff = Run({"trace", "diff", Path("n.vxtr"), Path("o.vxtr")});
  EXPECT_EQ(diff.exitCode, 0) << diff.output;

  const std::string other = directory_.File("[Simulator]\nCameras = 1\n[Camera0]\nModel = RQ512_LX\n"
                                            "[Camera0.CameraModel]\nValue = OTHER\n",
                                            "other.ini");
  const TOutcome differing = Run({"trace", "replay", "--config", other, Path("n.vxtr")});
  EXPECT_EQ(differing.exitCode, 3);
  EXPECT_THAT(differing.output, HasSubstr("< T1 GetHeadModel(name=\"RQ512_LX\") = 20002 RC_SUCCESS\n"
                                          "> T1 GetHeadModel(name=\"OTHER\") = 20002 RC_SUCCESS\n"));
  EXPECT_GT(
      json::parse(Run({"trace", "replay", "--json", "--config", other, Path("n.vxtr")}).output)["differences"], 0);
  const std::string silent = directory_.File("[Faults]\nRule = call VX_Open from 1 delay 100s\n", "silent.ini");
  EXPECT_THAT(Run({"trace", "replay", "--timeout", "0.1", "--config", silent, Path("n.vxtr")}).output,
              HasSubstr("> has not returned\n"));
  EXPECT_EQ(Run({"trace", "replay", other}).exitCode, 6);
  EXPECT_THAT(Run({"trace", "replay", directory_.Directory()}).errors, HasSubstr("is a directory"));
  EXPECT_EQ(Run({"trace", "replay", "-o", Path("n.vxtr"), Path("n.vxtr")}).exitCode, 1); // would be lost
  EXPECT_EQ(Run({"trace", "replay", "--config", Path("n.vxtr"), Path("n.vxtr")}).exitCode, 6);
}

TEST_F(ToolTrace, HasImagesAndRegistersOnRequest)
{
  Configure("[Simulator]\nCameras = 1\n[Camera0]\nModel = RQ512_LX\nScene = counter\n");
  Run({"trace", "record", "-o", Path("s.vxtr"), "--store-pixels", "--registers", VXTOOL_TRACED_PROGRAM, "image"});
  const json get = Calls("s.vxtr", {"--function", "GetAcquiredData16"}).front();
  EXPECT_EQ(Run({"trace", "images", Path("s.vxtr"), Path("images")}).exitCode, 0);
  const std::string image = TextOf(Path("images/000001-GetAcquiredData16.raw"));
  char checksum[32];
  std::snprintf(checksum, sizeof checksum, "%016llx",
                static_cast<unsigned long long>(Checksum(image.data(), image.size())));
  EXPECT_EQ(get["arguments"]["array"]["checksum"], checksum);

  const json unused = Calls("s.vxtr", {"--function", "SetShutter"}).front();
  EXPECT_EQ(unused["arguments"], (json{{"first", 11}, {"second", 12}, {"third", 13}, {"fourth", 14}}));
  std::vector<std::string> contexts;
  for (const json& call : Calls("s.vxtr", {"--function", "*Observer"}))
    contexts.push_back(call["arguments"]["context"]);
  EXPECT_THAT(contexts, ::testing::ElementsAre("object 1", "object 2", "object 1"));
  EXPECT_THAT(Run({"trace", "replay", Path("s.vxtr")}).output,
              ::testing::StartsWith("no difference in " + std::to_string(Calls("s.vxtr", {"--api"}).size())));
  const std::string real =
      directory_.File(kSmallCamera + std::string("[Camera0.DeviceSource]\nValue = a network\n"));
  EXPECT_THAT(
      Run({"trace", "replay", "--config", real, Path("s.vxtr")}).output,
      HasSubstr(
          "not replayed: 1 call of vxsys_CameraPotsSetPotDefaultEnable: they may change the camera for good"));
}

TEST_F(ToolTrace, ReplayMayTakeImagesEarlier)
{
  Configure(kSteadyCamera);
  Run({"trace", "record", "-o", Path("e.vxtr"), VXTOOL_TRACED_PROGRAM, "series"});
  EXPECT_THAT(Statistics("e.vxtr")["remarks"].dump(), HasSubstr("refused once, of GetOldestImage16:"));
  const std::string faster = directory_.File(kSmallCamera, "faster.ini");
  const json report = json::parse(Run({"trace", "replay", "--json", "--config", faster, Path("e.vxtr")}).output);
  EXPECT_EQ(report["first_difference"], nullptr) << report;
  EXPECT_GE(report["timing"], 2) << report;

  // The second image does not come: the wait for it is ended, and then it is missing.
  const std::string losing =
      directory_.File(std::string(kSteadyCamera) + "[Faults]\nRule = frame at 2 drop\n", "losing.ini");
  const TOutcome missing = Run({"trace", "replay", "--config", losing, Path("e.vxtr")});
  EXPECT_EQ(missing.exitCode, 3);
  EXPECT_THAT(missing.output, HasSubstr("= 20024 RC_NO_NEW_DATA"));
  EXPECT_THAT(missing.output, HasSubstr("\n1 difference in "));
}

TEST_F(ToolTrace, ReplayKeepsTheOrderOfThreads)
{
  Configure(kSmallCamera);
  Run({"trace", "record", "-o", Path("t.vxtr"), VXTOOL_TRACED_PROGRAM, "turns"});
  EXPECT_THAT(Run({"trace", "replay", Path("t.vxtr")}).output, ::testing::StartsWith("no difference in 40"));
}

TEST_F(ToolTrace, CallsBackAsTheProgramDid)
{
  Configure(kSmallCamera);
  const std::string pots = std::string(VXTOOL_SOURCES) + "examples/potentiometers.ini";
  Run({"trace", "record", "-o", Path("p.vxtr"), VXTOOL_TRACED_PROGRAM, "throw", pots});
  const TOutcome replay = Run({"trace", "replay", "-o", Path("q.vxtr"), Path("p.vxtr")});
  EXPECT_EQ(replay.output, "no difference in 4 calls\n");
  EXPECT_THAT(Run({"trace", "diff", Path("p.vxtr"), Path("q.vxtr")}).output,
              ::testing::StartsWith("no difference in "));
}

} // namespace
} // namespace vxtool
