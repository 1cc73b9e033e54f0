// SPDX-License-Identifier: MIT
// The doctor on machines with something wrong, and what it packs.
#include "tests/tools/FileReaders.h"
#include "tests/tools/ProgramRunner.h"
#include "tools/doctor/Checks.h"

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
  EXPECT_THAT(WrongWith("limits", {}, 100'000), HasSubstr("problem files end at 100 kB"));
  EXPECT_THAT(WrongWith("disk", {"--disk", directory_.Path("none")}),
              HasSubstr("none: No such file or directory"));
  EXPECT_THAT(WrongWith("disk", {"--disk", directory_.Directory()}, 100'000), HasSubstr("cannot be written"));
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

TEST_F(Doctor, BundleHasTheReportsWithoutNames)
{
  SetVariable("HOME", "/home/maria.secret");
  SetVariable("USER", "msecret");
  SetVariable("VXMCD_LOG", "info:" + directory_.Path("vxmcd.log"));
  Configure(std::string(kSmallCamera) +
            "; /home/maria.secret/cameras of msecret\n[Camera0.SerialNumber]\nValue = SECRET-731\n");
  const std::string bundle = directory_.Path("report.tar.gz");
  const TOutcome outcome = Run({"doctor", "--only", "cameras,libraries", "--bundle", bundle});
  EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
  EXPECT_THAT(outcome.errors, HasSubstr("report.txt, report.json, camera0.json, cameras.ini, "));
  EXPECT_EQ(fs::status(bundle).permissions(), fs::perms::owner_read | fs::perms::owner_write);

  const std::string folder = directory_.Path("unpacked");
  fs::create_directory(folder);
  ASSERT_EQ(std::system(("tar -xzf " + bundle + " -C " + folder).c_str()), 0);
  const json files = json::parse(TextOf(folder + "/manifest.json"))["files"];
  ASSERT_GE(files.size(), 4U);
  for (const json& file : files) {
    const std::string name = file["name"];
    const std::string text = TextOf(folder + "/" + name);
    EXPECT_EQ(text.size(), file["bytes"]) << name;
    EXPECT_THAT(text, Not(HasSubstr("ecret"))) << name;
    EXPECT_THAT(text, Not(HasSubstr("SECRET"))) << name;
    EXPECT_EQ(std::system(("cd " + folder + " && echo '" + file["sha256"].get<std::string>() + "  " + name +
                           "' | sha256sum -c --quiet")
                              .c_str()),
              0);
  }
  EXPECT_THAT(TextOf(folder + "/cameras.ini"), HasSubstr("~/cameras of <user>"));
  const TOutcome again = Run({"doctor", "--only", "libraries", "--bundle", bundle});
  EXPECT_EQ(again.exitCode, 4);
  EXPECT_THAT(again.errors, HasSubstr("exists already"));
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
