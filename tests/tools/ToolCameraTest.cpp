// SPDX-License-Identifier: MIT
// The program with everything a camera can be set to: area, binning, tracks, readout, cooling, and what it reports.
#include "tests/tools/FileReaders.h"
#include "tests/tools/ProgramRunner.h"

#include <algorithm>
#include <gmock/gmock.h>
#include <nlohmann/json.hpp>
#include <span>

namespace vxtool {
namespace {

// Without noise and motion two runs see the same.
constexpr const char* kStill =
    "[Simulator]\nCameras = 1\n[Camera0]\nModel = TRELLIS CMOS\nScene = resolution chart\n"
    "Clock = free\nNoise = off\n[Camera0.SensorWidth]\nValue = 128\n[Camera0.SensorHeight]\nValue = 96\n";
constexpr const char* kSquareBinning =
    "[Simulator]\nCameras = 1\n[Camera0]\nModel = TARN 1M\nScene = flat\nClock = free\n";
constexpr const char* kFastCooling =
    "[Simulator]\nCameras = 1\n[Camera0]\nModel = RQ512_LX\nScene = dark\nTimeScale = 1000\n";

class ToolCamera : public ToolProgram
{
protected:
  // One image, as rows of pixels.
  std::vector<std::vector<unsigned short>> Take(std::vector<std::string> options)
  {
    const std::string path = directory_.Path("image.tif");
    options.insert(options.begin(), {"acquire", "--overwrite", "--json", "--exposure", "0.001", "--output", path});
    const TOutcome outcome = Run(options);
    EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
    if (outcome.exitCode != 0) return {};
    report_ = nlohmann::json::parse(outcome.output);
    const TTiffPages file = ReadTiff(path);
    EXPECT_EQ(file.problem, "");
    const auto width = report_["image_width"].get<std::size_t>();
    const auto height = report_["image_height"].get<std::size_t>();
    if (file.pages.size() != 1 || file.pages[0].size() != 2 * width * height) {
      ADD_FAILURE() << "not one image of " << width << "x" << height;
      return {};
    }
    std::vector<std::vector<unsigned short>> rows(height, std::vector<unsigned short>(width));
    for (std::size_t row = 0; row < height; ++row)
      std::memcpy(rows[row].data(), file.pages[0].data() + 2 * width * row, 2 * width);
    return rows;
  }

  // What the program says when a setting does not work, with exit code 3.
  std::string ErrorOf(std::vector<std::string> options)
  {
    options.insert(options.begin(), "acquire");
    const TOutcome outcome = Run(options);
    EXPECT_EQ(outcome.exitCode, 3) << outcome.output << outcome.errors;
    EXPECT_EQ(std::count(outcome.errors.begin(), outcome.errors.end(), '\n'), 1) << outcome.errors;
    return outcome.errors;
  }

  nlohmann::json report_;
};

TEST_F(ToolCamera, InfoReportsEverythingAboutEachModel)
{
  Configure("[Simulator]\nCameras = 3\n[Camera1]\nModel = RQ512_LX\n[Camera2]\nModel = TARN 1M\n");
  const struct
  {
    const char* model;
    int width;
    std::size_t channels;
    std::size_t gains;
    double secondFactor;
    double lowest;
  } expected[] = {
      {"TRELLIS CMOS", 2048, 2, 3, 2, -30}, {"RQ512_LX", 512, 1, 4, 2, -80}, {"TARN 1M", 1280, 1, 2, 4, -10}};
  for (int camera = 0; camera < 3; ++camera) {
    SCOPED_TRACE(expected[camera].model);
    const TOutcome outcome = Run({"info", "--json", "--camera", std::to_string(camera)});
    ASSERT_EQ(outcome.exitCode, 0) << outcome.errors;
    const auto info = nlohmann::json::parse(outcome.output);
    EXPECT_EQ(info["model"], expected[camera].model);
    EXPECT_EQ(info["source"], "simulated");
    EXPECT_EQ(info["sensor_pixels"]["width"], expected[camera].width);
    EXPECT_EQ(info["channels"].size(), expected[camera].channels);
    ASSERT_EQ(info["gains"].size(), expected[camera].gains);
    EXPECT_NE(info["gains"][0]["text"], "");
    EXPECT_EQ(info["gains"][1]["factor"], expected[camera].secondFactor);
    EXPECT_EQ(info["target_range_celsius"]["minimum"], expected[camera].lowest);
    EXPECT_EQ(info["temperature"]["state"], "RC_TEMP_OFF");
    EXPECT_FALSE(info["speeds_mhz"].empty());
  }
  Configure("[Simulator]\nCameras = 1\n[Camera0]\nRemove = SensorTemperature, SensorCooling, PixelWidth\n");
  const TOutcome poor = Run({"info"});
  EXPECT_EQ(poor.exitCode, 0) << poor.errors;
  for (const char* line : {"- (GetTemperatureF: RC_NOT_SUPPORTED)", "- (IsCoolerOn: RC_NOT_SUPPORTED)",
                           "- (GetPixelSize: RC_NOT_SUPPORTED)"})
    EXPECT_NE(poor.output.find(line), std::string::npos) << line << "\n" << poor.output;
  const auto json = nlohmann::json::parse(Run({"info", "--json"}).output);
  EXPECT_TRUE(json["pixel_um"].is_null());
  EXPECT_THAT(json["errors"].dump(), ::testing::HasSubstr("\"function\":\"GetPixelSize\""));
  EXPECT_THAT(json["errors"].dump(), ::testing::HasSubstr("RC_NOT_SUPPORTED"));
}

TEST_F(ToolCamera, AreaIsThatPartOfTheWholeImage)
{
  Configure(kStill);
  const auto whole = Take({});
  const auto part = Take({"--area", "33,17,64x40"});
  ASSERT_EQ(whole.size(), 96u);
  ASSERT_EQ(part.size(), 40u);
  ASSERT_EQ(part[0].size(), 64u);
  for (std::size_t row = 0; row < part.size(); ++row) {
    const auto begin = whole[row + 16].begin() + 32;
    ASSERT_EQ(part[row], std::vector<unsigned short>(begin, begin + 64)) << "row " << row;
  }
  EXPECT_EQ(Take({"--left", "33", "--top", "17", "--width", "64", "--height", "40"}), part);
  EXPECT_EQ(Take({"--top", "50"}).size(), 47u) << "to the edge of the sensor";
}

TEST_F(ToolCamera, TracksAreStripsCountedFromTheLastRow)
{
  Configure(kStill);
  const auto tracks = Take({"--tracks", "1-16,49-56"});
  ASSERT_EQ(tracks.size(), 2u);
  ASSERT_EQ(tracks[0].size(), 128u);
  const auto lowest = Take({"--area", "1,81,128x16", "--binning", "1x16"});
  const auto higher = Take({"--area", "1,41,128x8", "--binning", "1x8"});
  EXPECT_EQ(tracks[1], lowest.at(0)) << "the first track is the last row";
  EXPECT_EQ(tracks[0], higher.at(0));
  EXPECT_NE(tracks[0], tracks[1]);
  EXPECT_NE(ErrorOf({"--tracks", "90-97"}).find("96 rows"), std::string::npos);
  Configure(kSmallCamera);
  EXPECT_NE(ErrorOf({"--tracks", "1-10"}).find("--tracks: SetRandomTracks: 20991 RC_NOT_SUPPORTED"),
            std::string::npos);
}

TEST_F(ToolCamera, SumsAreWholeByDefaultAndClippedToFewerBits)
{
  Configure(kStill);
  const auto sum = [&](const std::string& file, std::vector<std::string> options, int exitCode) {
    options.insert(options.begin(), {"acquire", "--mode", "accumulate", "--accumulations", "200", "--exposure",
                                     "0.01", "--json", "--output", directory_.Path(file)});
    const TOutcome outcome = Run(options);
    EXPECT_EQ(outcome.exitCode, exitCode) << file << outcome.errors;
    return outcome;
  };
  EXPECT_EQ(Count(sum("whole.tif", {}, 0), "clipped_pixels"), 0);
  const TTiffPages whole = ReadTiff(directory_.Path("whole.tif"));
  ASSERT_EQ(whole.bits, 32);
  std::vector<int> sums(128 * 96);
  ASSERT_EQ(whole.pages.at(0).size(), 4 * sums.size());
  std::memcpy(sums.data(), whole.pages[0].data(), 4 * sums.size());
  std::vector<unsigned short> expected;
  for (const int value : sums) expected.push_back(static_cast<unsigned short>(std::min(value, 65535)));
  const auto clipped = std::count_if(sums.begin(), sums.end(), [](int value) { return value > 65535; });
  ASSERT_GT(clipped, 0);
  ASSERT_LT(clipped, 128 * 96);

  const auto expectClipped = [&](const TOutcome& outcome, const std::string& file) {
    const std::string path = directory_.Path(file);
    EXPECT_EQ(Count(outcome, "clipped_pixels"), clipped);
    EXPECT_NE(outcome.errors.find(std::to_string(clipped) + " pixels of 1 image did not fit"), std::string::npos)
        << outcome.errors;
    const auto pixels =
        file.ends_with(".fits") ? ReadFits(path, PixelDepth::Bits16).pixels : ReadTiff(path).pages.at(0);
    EXPECT_TRUE(std::ranges::equal(pixels, std::as_bytes(std::span(expected)))) << file;
  };
  const std::string run = directory_.Path("run");
  for (const char* file : {"a.tif", "a.fits"}) expectClipped(sum(file, {"--bits", "16"}, 5), file);
  expectClipped(sum("b.tif", {"--bits", "16", "--spool", run}, 5), "b.tif");
  const TOutcome converted = Run({"convert", run, "--json", "--bits", "16", "-o", directory_.Path("c.tif")});
  EXPECT_EQ(converted.exitCode, 5);
  expectClipped(converted, "c.tif");
  sum("d.tif", {"--bits", "8"}, 5);
  EXPECT_EQ(ReadTiff(directory_.Path("d.tif")).pages.at(0)[0], std::byte{255});
}

TEST_F(ToolCamera, BinningIsInForceOrRefused)
{
  Configure(kSquareBinning);
  const auto binned = Take({"--area", "101,101,200x100", "--binning", "4x4"});
  EXPECT_EQ(binned.size(), 25u);
  EXPECT_EQ(report_["area"]["horizontal_binning"], 4);
  for (const std::string binning : {"5x5", "4x2"})
    EXPECT_NE(
        ErrorOf({"--area", "101,101,200x100", "--binning", binning})
            .find("--binning: " + binning + " is not accepted; this camera bins by 1x1, 2x2, 3x3, 4x4 or 8x8"),
        std::string::npos);
  EXPECT_NE(ErrorOf({"--area", "1,1,2x2", "--binning", "3x3"}).find("larger than the area"), std::string::npos);
  EXPECT_NE(
      ErrorOf({"--area", "1200,1,100x10"}).find("--area: the area is 1200,1,100x10, which does not fit on the"),
      std::string::npos);

  // A write that the library does not report as refused shows at the first image.
  Configure(std::string(kSquareBinning) + "[Faults]\nRule = call VX_SetInt feature AOIWidth rc 5\n");
  const TOutcome refused = Run({"acquire", "--area", "1,1,100x1024"});
  EXPECT_EQ(refused.exitCode, 3);
  EXPECT_NE(refused.errors.find("did not take the image area (vxmcd_GetIntactImage: 20068"), std::string::npos)
      << refused.errors;
}

TEST_F(ToolCamera, MaximumExposureIsTaken)
{
  Configure(std::string(kStill) + "[Camera0.ExposureTime]\nMax = 0.1\n"); // in single precision that is more
  EXPECT_EQ(Run({"acquire", "--exposure", "0.1"}).exitCode, 0);
  EXPECT_NE(
      ErrorOf({"--exposure", "60"}).find("--exposure: 60 is not accepted; this camera exposes at most 0.1 s"),
      std::string::npos);
}

TEST_F(ToolCamera, GainBringsItsChannelAndAmplifier)
{
  Configure(kStill);
  Take({"--gain", "1", "--speed", "0", "--baseline-clamp", "off"});
  EXPECT_EQ(report_["gain"], "Gain 2");
  EXPECT_EQ(report_["amplifier"], "High Gain");
  EXPECT_EQ(report_["speed_mhz"], 100.0);
  const auto low = Take({"--amplifier", "0"}); // takes the camera out of its combined channel
  EXPECT_EQ(report_["amplifier"], "Low Gain");
  EXPECT_EQ(Take({"--gain", "0"}), low);
  EXPECT_NE(Take({"--gain", "2"}), low);

  Configure(kSmallCamera);
  Take({"--gain", "3"});
  EXPECT_EQ(report_["amplifier"], "High Gain");
  EXPECT_NE(ErrorOf({"--gain", "3", "--amplifier", "0"}).find("3 is not accepted; it cannot be had"),
            std::string::npos);
  const std::pair<const char*, std::string> numbers[] = {{"--gain", "4 gains, 0 to 3"},
                                                         {"--channel", "1 channel, 0"},
                                                         {"--speed", "2 speeds, 0 to 1"},
                                                         {"--amplifier", "2 amplifiers, 0 to 1"}};
  for (const auto& [option, has] : numbers)
    EXPECT_NE(ErrorOf({option, "99"}).find(option + (": 99 is not accepted; this camera has " + has)),
              std::string::npos);
}

TEST_F(ToolCamera, CooledSeriesSaysSoInItsReportAndItsFile)
{
  Configure(kFastCooling);
  const std::string path = directory_.Path("cold.fits");
  const TOutcome outcome = Run({"acquire", "--temperature", "-60", "--wait-stable", "30", "--fan", "full",
                                "--frames", "3", "--exposure", "0.001", "--json", "--output", path});
  ASSERT_EQ(outcome.exitCode, 0) << outcome.errors;
  const auto report = nlohmann::json::parse(outcome.output);
  EXPECT_NEAR(report["celsius_start"].get<double>(), -60.0, 0.6);
  EXPECT_NEAR(report["celsius_end"].get<double>(), -60.0, 0.6);
  EXPECT_EQ(report["celsius_target"], -60.0);
  const TFitsCube cube = ReadFits(path, PixelDepth::Bits16);
  EXPECT_NEAR(cube.sensorCelsius, -60.0, 0.6);
  EXPECT_EQ(cube.camera, "RQ512_LX");
}

TEST_F(ToolCamera, CoolingThatDoesNotWorkEndsBeforeTheFirstImage)
{
  Configure(kFastCooling);
  const std::string path = directory_.Path("warm.tif");
  const std::string late =
      ErrorOf({"--temperature", "-80", "--fan", "off", "--wait-stable", "0.5", "--quiet", "--output", path});
  EXPECT_NE(late.find("RC_TEMP_NOT_REACHED"), std::string::npos) << late;
  EXPECT_FALSE(std::filesystem::exists(path));
  EXPECT_NE(ErrorOf({"--temperature", "-81"}).find("takes -80 to 20 C"), std::string::npos);

  Configure(std::string(kFastCooling) + "[Faults]\nRule = call VX_SetBool feature SensorCooling rc 5\n");
  EXPECT_NE(ErrorOf({"--temperature", "-60"}).find("does not switch on"), std::string::npos);
  Configure(std::string(kFastCooling) + "Remove = TargetSensorTemperature, FanSpeed\n");
  EXPECT_NE(ErrorOf({"--temperature", "-60"}).find("20991 RC_NOT_SUPPORTED"), std::string::npos);
  EXPECT_NE(ErrorOf({"--fan", "low"}).find("--fan: SetFanMode: 20991"), std::string::npos);
}

} // namespace
} // namespace vxtool
