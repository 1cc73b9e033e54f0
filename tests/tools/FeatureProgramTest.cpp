// SPDX-License-Identifier: MIT
// The program with the names of cameras and of their features: list, get, set, and the options that set features.
#include "tests/tools/FileReaders.h"
#include "tests/tools/ProgramRunner.h"

#include <fstream>
#include <gmock/gmock.h>
#include <map>
#include <nlohmann/json.hpp>
#include <regex>
#include <set>

namespace vxtool {
namespace {

using nlohmann::json;
using ::testing::HasSubstr;

constexpr const char* kThree = "[Simulator]\nCameras = 3\n[Camera1]\nModel = RQ512_LX\n[Camera1.SerialNumber]\n"
                               "Value = 2\n[Camera2]\nModel = TARN 1M\n";
constexpr const char* kEightBits =
    "[Simulator]\nCameras = 1\n[Camera0]\nModel = RQ512_LX\nClock = free\nScene = flat\n";

class ToolFeatures : public ToolProgram
{
protected:
  void ExpectRefused(const std::vector<std::string>& arguments, const std::string& message)
  {
    const TOutcome outcome = Run(arguments);
    EXPECT_THAT(outcome.exitCode, ::testing::AnyOf(2, 3)) << message;
    EXPECT_THAT(outcome.errors, ::testing::StartsWith("vxmcd: " + message));
    EXPECT_EQ(outcome.output, "");
  }
};

TEST_F(ToolFeatures, CamerasAreListedAndChosenByNumberOrSerialNumber)
{
  Configure(std::string(kThree) + "[Faults]\nRule = call VX_Open device 2 rc 43\n");
  const json cameras = json::parse(Run({"list", "--json"}).output)["cameras"];
  ASSERT_EQ(cameras.size(), 3u);
  EXPECT_EQ(cameras[0], (json{{"camera", 0},
                              {"handle", 101},
                              {"model", "TRELLIS CMOS"},
                              {"serial", 512},
                              {"serial_text", "VSC-00512"},
                              {"source", "simulated"},
                              {"problem", nullptr}}));
  EXPECT_TRUE(cameras[2]["model"].is_null());
  EXPECT_THAT(cameras[2]["problem"].get<std::string>(), HasSubstr("another program uses the camera"));
  EXPECT_THAT(Run({"list"}).output, HasSubstr("another program uses the camera"));

  const auto numberOf = [this](const char* camera) {
    const TOutcome outcome = Run({"info", "--json", "--camera", camera});
    return outcome.exitCode == 0 ? json::parse(outcome.output)["camera"].get<int>() : -1;
  };
  EXPECT_EQ(numberOf("VSC-00512"), 0);
  EXPECT_EQ(numberOf("serial:512"), 0) << "the number in it";
  EXPECT_EQ(numberOf("serial:2"), 1);
  EXPECT_EQ(numberOf("1"), 1);
  ExpectRefused({"info", "-c", "2"}, "Initialize: 20990");
  ExpectRefused({"get", "-c", "2"}, "VX_Open: 43: another program uses the camera");
  ExpectRefused({"acquire", "-c", "512"}, "there is no camera 512: 3 attached");
  ExpectRefused({"get", "-c", "serial:7"},
                "--camera: no camera has the serial number 7; there are: VSC-00512 (camera "
                "0), 2 (camera 1), an unknown one (camera 2: VX_Open: 43");
}

TEST_F(ToolFeatures, AreReadSetAndRefusedWithWhatIsAccepted)
{
  Configure(kThree);
  const json get = json::parse(Run({"get", "-c", "1", "ExposureTime", "PreAmpGain", "--json"}).output)["features"];
  EXPECT_EQ(get[0]["kind"], "float");
  EXPECT_EQ(get[0]["unit"], "s");
  EXPECT_EQ(get[0]["maximum"], 10.0);
  EXPECT_EQ(get[1]["words"][3], (json{{"text", "30x"}, {"available", false}}));
  EXPECT_THAT(Run({"get", "-c", "1"}).output, ::testing::ContainsRegex("ExposureTime +0.01 s +3e-06 to 10\n"));

  const json all = json::parse(Run({"info", "--features", "-c", "1", "--json"}).output)["features"];
  for (const json& feature : all) EXPECT_EQ(feature["origin"], "simulated") << feature;
  EXPECT_GT(all.size(), 40U);

  const TOutcome set = Run(
      {"set", "-c", "1", "Overlap=on", "PreAmpGainChannel=High", "ExposureTime=0.25", "AOIWidth=100", "--json"});
  ASSERT_EQ(set.exitCode, 0) << set.errors;
  const json values = json::parse(set.output)["features"];
  EXPECT_EQ(values[0]["value"], true);
  EXPECT_EQ(values[1]["value"], "High");
  EXPECT_EQ(values[2]["value"], 0.25);
  EXPECT_EQ(values[3]["value"], 100);
  const std::pair<std::vector<std::string>, const char*> refused[] = {
      {{"get", "exposuretime"}, "exposuretime: this camera has no such feature; the nearest is ExposureTime"},
      {{"set", "ExposureTime=99"}, "ExposureTime: 99 is not accepted; a number from 1e-05 to 30 is"},
      {{"set", "FrameCount=1.5"}, "FrameCount: 1.5 is not accepted; a whole number from 1 to 2147483647 is"},
      {{"set", "Overlap=maybe"}, "Overlap: maybe is not accepted; on or off is"},
      {{"set", "FanSpeed=low"}, "FanSpeed: low is not accepted; Off, Low or On is; the nearest is Low"},
      {{"set", "PixelEncoding=Mono12"}, "PixelEncoding: Mono12 is not accepted; Mono16 or Mono32 is; it is not"},
      {{"set", "SensorWidth=5"}, "SensorWidth: VX_SetInt: 5: the feature cannot be written"},
      {{"set", "SoftwareTrigger=1"}, "SoftwareTrigger: it is a command"},
      {{"set", "Overlap=on", "Foo=1"},
       "Foo: this camera has no such feature; vxmcd get lists its features; set before"},
  };
  for (const auto& [arguments, message] : refused) ExpectRefused(arguments, message);
  EXPECT_EQ(Run({"set", "Overlap"}).exitCode, 1);
}

TEST_F(ToolFeatures, AreSetForARunAfterItsOtherOptions)
{
  Configure(kEightBits);
  const std::string path = directory_.Path("eight.tif");
  ExpectRefused({"acquire", "--bits", "8"},
                "--bits: 8 is not accepted; the camera is set to Mono16, and --encoding "
                "Mono8 sets it to 8 bits");
  const TOutcome eight = Run({"acquire", "--bits", "8", "--encoding", "Mono8", "-o", path, "--exposure", "1",
                              "--set", "ExposureTime=0.5", "--set", "BaselineLevel=7", "--json"});
  ASSERT_EQ(eight.exitCode, 0) << eight.errors;
  EXPECT_EQ(ReadTiff(path).bits, 8);
  EXPECT_EQ(json::parse(eight.output)["exposure_s"], 0.5);
  ExpectRefused({"acquire", "--encoding", "Mono9"}, "--encoding: Mono9 is not accepted; Mono8, Mono12,");
  ExpectRefused({"acquire", "--set", "Overlap=on", "--set", "Foo=1"},
                "--set: Foo: this camera has no such feature");
  Configure("[Simulator]\nCameras = 1\n");
  ExpectRefused({"acquire", "--bits", "8"}, "--bits: 8 is not accepted; 16 or 32 is");
}

TEST(KnownFeatures, HaveTheNamesThatTheLibrariesUse)
{
  const auto namesIn = [](const std::string& file, const std::string& pattern) {
    std::ifstream stream(VXTOOL_SOURCES + file);
    std::string text{std::istreambuf_iterator<char>(stream), {}};
    text = text.substr(0, text.find("namespace FeatureText"));
    const std::regex name(pattern);
    std::set<std::string> names;
    for (std::sregex_iterator match(text.begin(), text.end(), name), end; match != end; ++match)
      names.insert((*match)[1]);
    EXPECT_FALSE(names.empty()) << file;
    return names;
  };
  std::set<std::string> known = namesIn("tools/KnownFeatures.cpp", "\\{\"(\\w+)\", ");
  known.insert({"DeviceCount", "FeatureSources"}); // of the library itself; what info --features shows
  const std::pair<const char*, const char*> sources[] = {
      {"features/feature_names.h", "L\"(\\w+)\""},
      {"vxcore/genicam/camera_features.cpp", "[^>]\\{L\"(\\w+)\""},
      {"vxcore/simulated/TCameraFeatures.cpp", "\\{L\"(\\w+)\""},
      {"vxcore/simulated/bus_features.cpp", "\\{L\"(\\w+)\""},
      {"vxcore/simulated/TChoice.cpp", "EChoice::\\w+, L\"(\\w+)\""}};
  for (const auto& [file, pattern] : sources)
    for (const std::string& name : namesIn(file, pattern))
      EXPECT_EQ(known.count(name), 1u) << file << ": " << name;
}

#ifdef VXTOOL_HAS_GENICAM
TEST_F(ToolFeatures, OfARealCameraAreShownWithTheirSources)
{
  Configure("[Backends]\nSimulator = off\n[GenICam]\nDevices = Fake_1\n"); // needs no network
  const json report = json::parse(Run({"info", "--features", "--json"}).output);
  EXPECT_EQ(report["source"], "simulated by Aravis, Fake_1");
  std::map<std::string, json> features;
  for (const json& feature : report["features"]) features[feature["name"]] = feature;
  EXPECT_EQ(features["ExposureTime"]["camera_feature"], "ExposureTimeAbs");
  EXPECT_EQ(features["ExposureTime"]["scale"], 1e-6);
  EXPECT_EQ(features["ExposureTime"]["value"], 0.01);
  EXPECT_EQ(features["CycleMode"]["origin"], "emulated");
  EXPECT_EQ(features["BaselineLevel"]["implemented"], false);
  EXPECT_EQ(features["BaselineLevel"]["problem"], "the camera has no BlackLevel or BlackLevelRaw");
  const std::string text = Run({"info", "--features"}).output;
  EXPECT_THAT(text, ::testing::ContainsRegex("\nExposureTime +derived +ExposureTimeAbs . 1e-06 +0.01 s\n"));
  EXPECT_THAT(text, ::testing::ContainsRegex("\nFanSpeed +map file +- +- .no map file names a feature"));
}
#endif

} // namespace
} // namespace vxtool
