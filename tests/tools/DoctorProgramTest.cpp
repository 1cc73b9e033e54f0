// SPDX-License-Identifier: MIT
// The doctor on machines with something wrong, and what it packs.
#include "tests/tools/FileReaders.h"
#include "tests/tools/ProgramRunner.h"
#include "tools/doctor/Checks.h"
#include "tools/TRedaction.h"

#include <cstdlib>
#include <filesystem>
#include <gmock/gmock.h>
#include <map>
#include <nlohmann/json.hpp>
#include <optional>

namespace vxtool {
namespace {

namespace fs = std::filesystem;
using nlohmann::json;
using ::testing::HasSubstr;
using ::testing::Not;

class Doctor : public ToolProgram
{
protected:
  ~Doctor() override
  {
    for (const auto& [name, value] : before_)
      value ? setenv(name.c_str(), value->c_str(), 1) : unsetenv(name.c_str());
  }
  void SetVariable(const std::string& name, const std::string& value)
  {
    const char* const before = std::getenv(name.c_str());
    before_[name] = before ? std::optional<std::string>(before) : std::nullopt;
    setenv(name.c_str(), value.c_str(), 1);
  }

  /// "problem cameras: text" of everything that is wrong with an area.
  std::string WrongWith(const std::string& area, std::vector<std::string> options = {},
                        rlim_t fileLimit = RLIM_INFINITY)
  {
    options.insert(options.begin(), {"doctor", "--json", "--only", area});
    const TOutcome outcome = Run(options, fileLimit);
    const json report = json::parse(outcome.output);
    EXPECT_EQ(outcome.exitCode, report["problems"] == 0 ? 0 : 3) << outcome.output;
    std::string wrong;
    for (const json& finding : report["findings"]) {
      EXPECT_EQ(finding["area"], area);
      EXPECT_EQ(finding["severity"] == "right", finding["cure"].is_null()) << finding;
      if (finding["severity"] != "right")
        wrong += finding["severity"].get<std::string>() + " " + finding["text"].get<std::string>() + "\n";
    }
    return wrong;
  }

private:
  std::map<std::string, std::optional<std::string>> before_; // variables that were set
};

TEST_F(Doctor, PrintsOnlyWhatIsWrongAndTheVerdictLast)
{
  Configure(kSmallCamera);
  const TOutcome right = Run({"doctor", "--only", "cameras,permissions"});
  EXPECT_EQ(right.output, "no problems\n");
  EXPECT_EQ(right.exitCode, 0);
  const TOutcome all = Run({"doctor", "--only", "libraries,cameras", "-v"});
  EXPECT_THAT(all.output, HasSubstr("right    cameras: camera 0 opens: RQ512_LX, serial number 20417"));
  EXPECT_THAT(all.output, HasSubstr("/lib/libvxmcd.so.3"));

  Configure("[Simulator]\nCameras = many\n");
  const TOutcome wrong = Run({"doctor", "--only", "cameras"});
  EXPECT_EQ(wrong.exitCode, 3);
  EXPECT_THAT(wrong.output,
              ::testing::StartsWith("problem  cameras: the configuration of the cameras is wrong: "));
  EXPECT_THAT(wrong.output, HasSubstr("cameras.ini: line 2, [Simulator] Cameras: 'many'"));
  EXPECT_THAT(wrong.output, ::testing::EndsWith("\n1 problem\n"));
}

TEST_F(Doctor, FindsWhatIsWrongWithCameras)
{
  Configure(std::string(kSmallCamera) + "[Faults]\nRule = call VX_Open device 0 rc 43\n");
  EXPECT_THAT(WrongWith("cameras"), HasSubstr("camera 0 cannot be opened: VX_Open: 43: another program"));
  Configure("[Simulator]\nCameras = 0\n");
  EXPECT_EQ(WrongWith("cameras"), "problem no camera is attached\n");
  Configure(std::string(kSteadyCamera) + "[Faults]\nRule = frame device 0 any drop\n");
  EXPECT_THAT(WrongWith("timing"), HasSubstr("a run gave no image within 500 ms"));
}

TEST_F(Doctor, FindsWhatIsWrongWithTheMachine)
{
  Configure(kSmallCamera);
  EXPECT_THAT(WrongWith("limits", {}, 100'000), HasSubstr("problem the shell limits files to 100 kB"));
  EXPECT_THAT(WrongWith("disk", {"--disk", directory_.Path("none")}),
              HasSubstr("none: No such file or directory"));
  EXPECT_THAT(WrongWith("disk", {"--disk", directory_.Directory()}, 100'000),
              HasSubstr("cannot be written: File too large"));
  EXPECT_EQ(fs::exists(directory_.Path("vxmcd-doctor")), false);

  const fs::path other = directory_.Path("other");
  fs::create_directory(other);
  fs::copy_file(fs::path(VXTOOL_PROGRAM).parent_path().parent_path() / "lib/libvxmcd.so.3",
                other / "libvxmcd.so.3");
  SetVariable("LD_LIBRARY_PATH", other.string());
  EXPECT_THAT(WrongWith("libraries"), HasSubstr("warning there are several copies of libvxmcd"));
}

TEST_F(Doctor, FindsAPackageThatUsesAnotherLibrary)
{
  Configure(kSmallCamera);
  const std::string python =
      directory_.File("#!/bin/sh\nprintf 'python\\n1.24\\nloaded\\n/other/libvxmcd.so.3\\n'\n", "python3");
  fs::permissions(python, fs::perms::owner_all);
  SetVariable("PATH", directory_.Directory() + ":/usr/bin:/bin");
  EXPECT_THAT(WrongWith("python"), HasSubstr("the package vxmcd uses /other/libvxmcd.so.3, and this program /"));
  directory_.File("#!/bin/sh\nprintf 'python\\n\\nloaded\\n'\n", "python3");
  EXPECT_THAT(WrongWith("python"), HasSubstr("no NumPy"));
}

TEST(Redaction, FindsNamesAndPaths)
{
  TRedaction redaction;
  redaction.Hide("ana", "user");
  redaction.Hide("lab7.example", "host");
  redaction.HideSerialNumber(2048);
  redaction.HideSerialNumber(1);
  redaction.LearnPath("/data/My Study");
  redaction.LearnPath("Study/run");
  redaction.Learn("cannot open /home/boris/a.ini: 3\n[Camera1.SerialNumber]\nValue =  X-9\n"
                  "Devices = 10.1.2.3, usb:2233, discover, Fake_1\n");
  for (const auto& [text, expected] : std::map<std::string, std::string>{
           {"ana_1 of boris in analysis on lab7.example", "<user2>_1 of <user1> in analysis on <host1>"},
           {"X-9, Serial number 2048, 2048 x 2048", "<serial2>, Serial number <serial3>, 2048 x 2048"},
           {"{\"serial\":2048,\"width\":2048}", "{\"serial\":null,\"width\":2048}"},
           {"10.1.2.3,usb:2233, discover, Fake_1", "<address1>,usb:<serial1>, discover, Fake_1"},
           {"serial number 1 of 1", "serial number <serial4> of 1"},
           {"/data/My Study/a.raw, '/x y/z': 5 images/s, 5 /s", "<path1>, '<path2>': 5 images/s, 5 /s"},
           {"/usr/lib/x.so in /dev/shm or /dev/shm/ring, / 2", "/usr/lib/x.so in /dev/shm or <path3>, / 2"},
           {"{\"a\":\"/x/b.ini:12: wrong\"} of Study/run/2.", "{\"a\":\"<path4>:12: wrong\"} of <path5>."},
       })
    EXPECT_EQ(redaction.Text(text), expected);
  EXPECT_EQ(redaction.Path("/data/My Study/a.raw"), "<path1>");
}

TEST_F(Doctor, BundleHasTheReportsWithoutNames)
{
  // The trace is of another machine, so that only what is in it says what has to be replaced.
  Configure(std::string(kSmallCamera) + "[Camera0.SerialNumber]\nValue = SECRET-731415926\n");
  SetVariable("VXMCD_LOG", "warning:secret.log");
  const std::string study = directory_.Path("home/annasecret/Secret Study");
  fs::create_directories(study);
  EXPECT_EQ(Run({"trace", "record", "-o", "secret.vxtr", "--", VXTOOL_PROGRAM, "acquire", "-n", "2", "--spool",
                 study + "/1"})
                .exitCode,
            0);
  directory_.File("no trace", "other.txt");
  SetVariable("HOME", "/home/maria.secret");
  SetVariable("USER", "msecret");
  SetVariable("VXMCD_LOG", "debug:" + directory_.Path("vxmcd.log"));
  Configure(std::string(kSmallCamera) + "; /home/maria.secret/cameras of msecret, annasecret\n" +
            "[Camera0.SerialNumber]\nValue = SECRET-731415926\n");
  directory_.File(Run({"check", "--json", "--only", "identity,exposure"}).output, "check.json");
  ASSERT_THAT(TextOf(directory_.Path("secret.vxtr")), HasSubstr("Secret Study"));

  const std::string bundle = directory_.Path("report.tar.gz");
  const TOutcome outcome = Run({"doctor", "--only", "cameras,libraries", "--bundle", bundle});
  EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
  EXPECT_THAT(outcome.errors, HasSubstr("trace.vxtr is secret.vxtr"));
  EXPECT_THAT(outcome.errors, HasSubstr("report.txt, report.json, camera0.json, cameras.ini, log.txt, check.json, "
                                        "trace.vxtr, manifest.json"));
  EXPECT_EQ(fs::status(bundle).permissions(), fs::perms::owner_read | fs::perms::owner_write);

  const std::string folder = directory_.Path("unpacked");
  fs::create_directory(folder);
  ASSERT_EQ(std::system(("tar -xzf " + bundle + " -C " + folder).c_str()), 0);
  const json files = json::parse(TextOf(folder + "/manifest.json"))["files"];
  ASSERT_EQ(files.size(), 7U);
  for (const json& file : files) {
    const std::string name = file["name"];
    const std::string text = TextOf(folder + "/" + name);
    EXPECT_EQ(text.size(), file["bytes"]) << name;
    for (const std::string& secret :
         {std::string("ecret"), std::string("SECRET"), std::string("731415926"), directory_.Directory()})
      EXPECT_EQ(text.find(secret), std::string::npos) << name << " has " << secret;
    EXPECT_EQ(std::system(("cd " + folder + " && echo '" + file["sha256"].get<std::string>() + "  " + name +
                           "' | sha256sum -c --quiet")
                              .c_str()),
              0);
  }
  EXPECT_THAT(TextOf(folder + "/cameras.ini"),
              ::testing::ContainsRegex("<path[0-9]+> of <user[0-9]+>, <user[0-9]+>"));
  EXPECT_THAT(Run({"trace", "print", folder + "/trace.vxtr"}).output,
              ::testing::ContainsRegex("\"SerialNumber\", \"<serial[0-9]>\""));
  const TOutcome again = Run({"doctor", "--only", "libraries", "--bundle", bundle});
  EXPECT_EQ(again.exitCode, 4);
  EXPECT_THAT(again.errors, HasSubstr("exists already"));
  EXPECT_THAT(Run({"doctor", "--only", "libraries", "--bundle", "b.tar.gz", "--trace", "other.txt"}).errors,
              HasSubstr("--bundle: --trace: other.txt: "));
}

TEST_F(Doctor, FindsDeviceFilesOfCamerasOnUsb)
{
  const fs::path root = directory_.Directory();
  const fs::path devices = root / "sys/bus/usb/devices";
  fs::create_directories(devices / "1-2:1.0");
  fs::create_directories(devices / "1-2");
  const auto write = [&](const char* file, const char* text) {
    directory_.File(text, "sys/bus/usb/devices/" + std::string(file));
  };
  write("1-2:1.0/bInterfaceClass", "ef\n");
  write("1-2:1.0/bInterfaceSubClass", "05\n");
  write("1-2:1.0/bInterfaceProtocol", "00\n");
  write("1-2/busnum", "1\n");
  write("1-2/devnum", "17\n");
  write("1-2/product", "Camera 5\n");
  TFindings missing;
  CheckPermissions(missing, root.string());
  EXPECT_EQ(missing.Count(Severity::Problem), 1);
  EXPECT_THAT(missing.All()[0].text, HasSubstr("Camera 5: there is no " + root.string() + "/dev/bus/usb/001/017"));
  fs::create_directories(root / "dev/bus/usb/001");
  directory_.File("", "dev/bus/usb/001/017");
  TFindings right;
  CheckPermissions(right, root.string());
  EXPECT_EQ(right.Count(Severity::Problem), 0);
}

} // namespace
} // namespace vxtool
