// SPDX-License-Identifier: MIT
// The program as a whole: exit codes, files and counts, with simulated cameras configured by each test.
#include "runs/host_time.h"
#include "runs/TRunDescription.h"
#include "tests/tools/FileReaders.h"
#include "tests/tools/ProgramRunner.h"
#include "vxcore/simulated/imaging/TCounterPattern.h"

#include <fstream>
#include <nlohmann/json.hpp>
#include <pty.h>
#include <regex>
#include <set>
#include <sstream>
#include <sys/ioctl.h>
#include <unistd.h>

namespace vxtool {
namespace {

TEST_F(ToolProgram, WrongCommandLinesAreExplainedWithExitCodeOne)
{
  Configure(kSmallCamera);
  const std::vector<std::vector<std::string>> wrong = {
      {},
      {"dance"},
      {"acquire", "--exposure", "0"},
      {"acquire", "--frames", "0"},
      {"acquire", "--mode", "series"},
      {"acquire", "--mode", "single", "--frames", "3"},
      {"acquire", "--mode", "accumulate"},
      {"acquire", "--mode", "continuous", "--accumulations", "4"},
      {"acquire", "--trigger", "magic"},
      {"acquire", "--bits", "12"},
      {"acquire", "--area", "0,1,5x5"},
      {"acquire", "--area", "1,1,5x5", "--left", "3"},
      {"acquire", "--tracks", "10-1"},
      {"acquire", "--tracks", "1-10", "--binning", "2x2"},
      {"acquire", "--wait-stable"},
      {"acquire", "--temperature", "cold"},
      {"acquire", "--fan", "loud"},
      {"acquire", "--channel", "1", "--amplifier", "0"},
      {"acquire", "--baseline-clamp", "maybe"},
      {"acquire", "--output", "stack.jpg"},
      {"acquire", "--format", "tiff"},
      {"acquire", "--each"},
      {"acquire", "--image-type", "dark", "--spool", "run"},
      {"acquire", "--output", "a.tif", "--preview", "a.tif"},
      {"acquire", "--camera", "-1"},
      {"acquire", "--camera", "0", "--camera", "1", "--output", "a.tif"},
      {"acquire", "--camera", "0", "--camera", "serial:20417"},
  };
  for (const std::vector<std::string>& arguments : wrong) {
    const TOutcome outcome = Run(arguments);
    const std::string shown = ::testing::PrintToString(arguments);
    EXPECT_EQ(outcome.exitCode, 1) << shown << outcome.output << outcome.errors;
    EXPECT_NE(outcome.errors, "") << shown;
  }
  const TOutcome help = Run({"acquire", "--help"});
  EXPECT_EQ(help.exitCode, 0);
  EXPECT_NE(help.output.find("130  interrupted"), std::string::npos) << help.output;
  EXPECT_NE(help.output.find("{single,accumulate,series,continuous}"), std::string::npos) << "in their own order";
  const TOutcome version = Run({"--version"});
  EXPECT_EQ(version.exitCode, 0);
  EXPECT_TRUE(
      std::regex_match(version.output, std::regex("vxmcd +[0-9.]+  /.*/vxmcd\nlibvxmcd +[0-9.]+  /.*/libvxmcd"
                                                  "\\.so[0-9.]*\nlibvxcore +3[0-9.]*  /.*/libvxcore\\.so.*\n")))
      << version.output;
}

TEST_F(ToolProgram, MessagesNameWhatWasGivenAndWhatIsAccepted)
{
  Configure(kSmallCamera);
  const std::pair<std::vector<std::string>, const char*> wrong[] = {
      {{"aquire", "--frames", "3"}, "aquire: there is no such command; the nearest is acquire"},
      {{"dance"}, "dance: there is no such command; there are list, info, get, set, acquire"},
      {{"acquire", "--expsoure=1"}, "--expsoure: there is no such option; the nearest is --exposure"},
      {{"convert", "--salv", "run"}, "--salv: there is no such option; the nearest is --salvage"},
      {{"acquire", "--area", "0,1,5x5"},
       "--area: 0,1,5x5 is not accepted; LEFT,TOP,WIDTHxHEIGHT with numbers from 1"},
      {{"acquire", "--exposure", "0"}, "--exposure: 0 is not accepted; a time in s above 0"},
      {{"acquire", "-o", "-"}, "--output: - is not accepted; the formats cannot be written to standard output"},
      {{"acquire", "--fan", "loud"}, "--fan: loud is not accepted; full, low or off is"},
      {{"acquire", "--bits", "12"}, "--bits: 12 is not accepted; 8, 16 or 32 is"},
      {{"acquire", "--exposure"}, "--exposure: needs a value"},
      {{"acquire", "--trigger", "external-exposure"},
       "vxmcd: --trigger: external-exposure is not accepted; this camera takes internal, external, software or"},
      {{"acquire", "--binning", "1x17"},
       "vxmcd: --binning: 1x17 is not accepted; this camera bins by at most 16x16"},
      {{"acquire", "--exposure", "1", "--exposure", "2"}, "--exposure: is given more than once"},
      {{"acquire", "-o", ""}, "--output: an empty value is not accepted; the name of a file is"},
      {{"acquire", "--gain", "010"}, "vxmcd: --gain: 10 is not accepted"}, // not octal
      {{"acquire", "-n", "0"}, "--frames: 0 is not accepted; a whole number from 1 to 1000000000 is"},
  };
  for (const auto& [arguments, message] : wrong)
    EXPECT_TRUE(Run(arguments).errors.starts_with(message)) << Run(arguments).errors;

  Configure("[Simulator]\nCameras = two\n");
  for (const char* command : {"list", "info", "acquire"}) {
    const std::string errors = Run({command}).errors;
    EXPECT_TRUE(errors.starts_with("libvxcore: ")) << errors;
    EXPECT_EQ(errors.find('\n'), errors.size() - 1) << errors;
  }
}

TEST_F(ToolProgram, RunWithoutAnOutputSaysSoBeforeItStarts)
{
  Configure(std::string(kSmallCamera) + "[Faults]\nRule = call VX_WaitBuffer at 1 rc 100\n");
  const std::string said = "vxmcd: no image will be kept: there is no --output, --preview or --spool\n";
  const TOutcome outcome = Run({"acquire"});
  EXPECT_EQ(outcome.exitCode, 3);
  EXPECT_TRUE(outcome.errors.starts_with(said) && outcome.errors.size() > said.size()) << outcome.errors;
  for (const char* option : {"--preview", "--spool"})
    EXPECT_EQ(Run({"acquire", option, directory_.Path("kept")}).errors.find(said), std::string::npos);
}

TEST_F(ToolProgram, ProgressCountsDownWithinTheWidthOfTheTerminal)
{
  Configure(kSteadyCamera);
  int master = -1;
  ASSERT_EQ(openpty(&master, &errorTerminal_, nullptr, nullptr, nullptr), 0);
  for (const unsigned short columns : std::initializer_list<unsigned short>{30, 0}) { // 0: by the environment
    const winsize size = {.ws_row = 24, .ws_col = columns, .ws_xpixel = 0, .ws_ypixel = 0};
    ASSERT_EQ(ioctl(master, TIOCSWINSZ, &size), 0);
    setenv("COLUMNS", columns == 0 ? "28" : "200", 1);
    EXPECT_EQ(Run({"acquire", "--exposure", "1.2", "--preview", directory_.Path("a.png"), "--overwrite"}).exitCode,
              0);
    std::string said(4096, ' ');
    said.resize(static_cast<std::size_t>(std::max<ssize_t>(0, read(master, said.data(), said.size()))));
    const std::size_t width = columns == 0 ? 27 : 29;
    EXPECT_NE(said.find("\r" + std::string("0/1 images, next image in 1 s, lost 0").substr(0, width) + "\x1b[K"),
              std::string::npos)
        << said;
    EXPECT_EQ(said.find("\r1/1 images, next"), std::string::npos) << said;
  }
  unsetenv("COLUMNS");
  close(master);
  close(errorTerminal_);
}

TEST_F(ToolProgram, DescribesCamerasOrSaysThatThereIsNone)
{
  Configure("[Simulator]\nCameras = 2\n[Camera1]\nModel = RQ512_LX\n");
  const TOutcome second = Run({"info", "--camera", "1"});
  EXPECT_EQ(second.exitCode, 0) << second.errors;
  EXPECT_NE(second.output.find("512 x 512 pixels"), std::string::npos) << second.output;
  EXPECT_EQ(Run({"describe", "--camera", "1"}).output, second.output) << "the former name";
  EXPECT_EQ(Run({"info", "--camera", "2"}).exitCode, 2);

  Configure("[Simulator]\nCameras = 0\n");
  EXPECT_EQ(Run({"list"}).exitCode, 2);
  EXPECT_EQ(Run({"list", "--json"}).output, "");
  const TOutcome none = Run({"acquire"});
  EXPECT_EQ(none.exitCode, 2);
  EXPECT_NE(none.errors.find("no camera 0"), std::string::npos) << none.errors;
}

TEST_F(ToolProgram, SeriesIsWrittenCompletelyInBothFormats)
{
  Configure(kSmallCamera);
  const TOutcome tiff = Run({"acquire", "--frames", "12", "--exposure", "0.001", "--cycle", "0.01", "--json",
                             "--output", directory_.Path("stack.tif"), "--preview", directory_.Path("last.png")});
  EXPECT_EQ(tiff.exitCode, 0) << tiff.errors;
  ExpectCountsAddUp(tiff);
  EXPECT_EQ(Count(tiff, "written"), 12);
  const TTiffPages stack = ReadTiff(directory_.Path("stack.tif"));
  EXPECT_EQ(stack.problem, "");
  EXPECT_EQ(stack.pages.size(), 12u);
  EXPECT_NE(stack.pages.front(), stack.pages.back());
  const TPngPicture picture = ReadPng(directory_.Path("last.png"));
  EXPECT_EQ(picture.width * picture.height * 2, stack.pages.back().size());

  Configure(kSteadyCamera); // which a program can follow without a plan
  const TOutcome fits = Run({"acquire", "--frames", "3", "--mode", "continuous", "--exposure", "0.001", "--bits",
                             "32", "--json", "--output", directory_.Path("cube.fits")});
  EXPECT_EQ(fits.exitCode, 0) << fits.errors;
  ExpectCountsAddUp(fits);
  const TFitsCube cube = ReadFits(directory_.Path("cube.fits"), PixelDepth::Bits32);
  EXPECT_EQ(cube.status, 0);
  EXPECT_EQ(cube.images, 3);
  EXPECT_EQ(cube.numbers, (std::vector<long long>{1, 2, 3}));
  EXPECT_GT(cube.ticks.at(2), cube.ticks.at(1));
}

TEST_F(ToolProgram, FitsOfOneImageSaysWhatItShowsAndWhenItWasExposed)
{
  Configure(kSteadyCamera);
  const std::string path = directory_.Path("dark.fits");
  const std::string before = UtcText(HostTimeNs());
  ASSERT_EQ(Run({"acquire", "--exposure", "0.25", "--image-type", "dark", "-o", path}).exitCode, 0);
  EXPECT_EQ(FitsVerify(path), "");
  const TFitsCube image = ReadFits(path, PixelDepth::Bits16);
  EXPECT_EQ(image.status, 0);
  EXPECT_EQ(image.axes, 2);
  EXPECT_EQ(image.imageType, "Dark Frame");
  EXPECT_EQ(image.numbers, std::vector<long long>{1});
  EXPECT_GT(image.dateObs, before);
  EXPECT_LT(image.dateEnd, UtcText(HostTimeNs()));
  const auto start = HostTimeOf(image.dateObs + "000Z");
  const auto end = HostTimeOf(image.dateEnd + "000Z");
  ASSERT_TRUE(start && end) << image.dateObs << image.dateEnd;
  EXPECT_NEAR(static_cast<double>(*end - *start), 0.25e9, 2e3);
}

TEST_F(ToolProgram, EachImageGetsItsOwnFileAndNoneIsReplaced)
{
  Configure(kSmallCamera);
  const auto acquire = [this](const char* file, std::vector<std::string> options) {
    options.insert(options.begin(), {"acquire", "--each", "--exposure", "0.001", "-o", directory_.Path(file)});
    return Run(options);
  };
  EXPECT_EQ(acquire("a.fits", {"--frames", "3"}).exitCode, 0);
  EXPECT_EQ(acquire("a.tif", {}).exitCode, 0);
  EXPECT_EQ(FitsVerify(directory_.Path("a-0000003.fits")), "");
  const TFitsCube third = ReadFits(directory_.Path("a-0000003.fits"), PixelDepth::Bits16);
  EXPECT_EQ(third.numbers, std::vector<long long>{3});
  EXPECT_EQ(third.axes, 2);
  EXPECT_EQ(ReadTiff(directory_.Path("a-0000001.tif")).pages.size(), 1u);
  EXPECT_FALSE(std::filesystem::exists(directory_.Path("a.fits")));

  std::filesystem::remove(directory_.Path("a-0000001.fits"));
  for (const std::vector<std::string>& options :
       {std::vector<std::string>{}, {"--frames", "9"}, {"--frames", "9", "--spool", directory_.Path("run")}}) {
    const TOutcome refused = acquire("a.fits", options);
    EXPECT_EQ(refused.exitCode, 4);
    EXPECT_NE(refused.errors.find("fits: exists already"), std::string::npos) << refused.errors;
    EXPECT_FALSE(std::filesystem::exists(directory_.Path("a-0000001.fits"))) << "said before the first image";
  }
  EXPECT_EQ(acquire("a.fits", {"--overwrite"}).exitCode, 0);
  EXPECT_EQ(acquire("no/a.fits", {}).exitCode, 4);
}

TEST_F(ToolProgram, TriggersStartTheExposures)
{
  Configure(std::string(kSteadyCamera) + "TriggerPeriod = 0.02\nTriggerWidth = 0.005\n");
  for (const char* trigger : {"software", "external", "external-start"}) {
    const TOutcome outcome = Run({"acquire", "--frames", "5", "--exposure", "0.001", "--trigger", trigger,
                                  "--timeout", "10", "--overwrite", "--output", directory_.Path("stack.tif")});
    EXPECT_EQ(outcome.exitCode, 0) << trigger << ": " << outcome.errors;
    EXPECT_EQ(ReadTiff(directory_.Path("stack.tif")).pages.size(), 5u) << trigger;
  }
  Configure(kSteadyCamera); // no pulses
  const TOutcome none = Run({"acquire", "--trigger", "external", "--timeout", "0.3"});
  EXPECT_EQ(none.exitCode, 3) << none.errors;
  EXPECT_NE(none.errors.find("trigger"), std::string::npos) << none.errors;
}

TEST_F(ToolProgram, SoftwareTriggersFollowTheCycleInEveryMode)
{
  Configure(kSteadyCamera);
  const std::string run = directory_.Path("run");
  const std::vector<std::vector<std::string>> modes = {{"--frames", "20"},
                                                       {"--mode", "continuous", "--frames", "20"},
                                                       {"--mode", "accumulate", "--accumulations", "20"},
                                                       {"--frames", "20", "--accumulations", "2"},
                                                       {"--frames", "20", "--spool", run}};
  for (std::vector<std::string> arguments : modes) {
    SCOPED_TRACE(::testing::PrintToString(arguments));
    arguments.insert(arguments.begin(), {"acquire", "--trigger", "software", "--cycle", "0.03", "--exposure",
                                         "0.001", "--json", "--timeout", "10"});
    const TOutcome outcome = Run(arguments);
    ASSERT_EQ(outcome.exitCode, 0) << outcome.errors;
    const double seconds = nlohmann::json::parse(outcome.output)["seconds"];
    EXPECT_GE(seconds, 19 * 0.03);
    EXPECT_LT(seconds, 19 * 0.1) << "waits of the loop do not delay triggers";
  }
  for (const char* trigger : {"external", "external-exposure"}) {
    const TOutcome refused = Run({"acquire", "--trigger", trigger, "--cycle", "0.1"});
    EXPECT_EQ(refused.exitCode, 1);
    EXPECT_NE(refused.errors.find("--cycle: with --trigger " + std::string(trigger) + " the pulses"),
              std::string::npos)
        << refused.errors;
  }
}

TEST_F(ToolProgram, FramesLostInTheCameraAreCountedAndReported)
{
  Configure(std::string(kSteadyCamera) + "[Faults]\nRule = frame 20 drop\nRule = frame 41 drop\n");
  for (const char* mode : {"continuous", "series"}) {
    SCOPED_TRACE(mode);
    const TOutcome outcome = Run({"acquire", "--mode", mode, "--frames", "60", "--exposure", "0.001", "--cycle",
                                  "0.005", "--json", "--overwrite", "--output", directory_.Path("stack.tif")});
    EXPECT_EQ(outcome.exitCode, 5) << outcome.errors;
    ExpectCountsAddUp(outcome);
    EXPECT_EQ(Count(outcome, "lost_in_camera"), 2);
    EXPECT_EQ(Count(outcome, "written"), mode == std::string("series") ? 58 : 60)
        << "a series sends none in their place";
    EXPECT_NE(outcome.errors.find("2 frames are missing"), std::string::npos) << outcome.errors;
  }
}

TEST_F(ToolProgram, DamagedMetadataLeavesOneImageWithoutItsClockValue)
{
  Configure(std::string(kSteadyCamera) + "[Faults]\nRule = chunk 3 len 0xFFFFFFFC\n");
  const TOutcome outcome =
      Run({"acquire", "--frames", "6", "--exposure", "0.001", "--json", "--output", directory_.Path("cube.fits")});
  EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
  EXPECT_EQ(Count(outcome, "without_timestamp"), 1);
  EXPECT_EQ(Count(outcome, "lost_in_camera"), 0);
  const std::vector<long long> ticks = ReadFits(directory_.Path("cube.fits"), PixelDepth::Bits16).ticks;
  ASSERT_EQ(ticks.size(), 6u);
  EXPECT_EQ(ticks[2], -1);
  EXPECT_EQ(ticks[1] - ticks[0], ticks[4] - ticks[3]);
}

// Frames as fast as they can be made, far ahead of the program: with a ring of five slots images are overwritten.
TEST_F(ToolProgram, EveryImageWrittenIsTheWholeFrameOfItsNumber)
{
  for (const bool isRingSmall : {false, true}) {
    Configure("[Simulator]\nCameras = 1\n[Camera0]\nModel = RQ512_LX\nClock = free\nScene = counter\n" +
              std::string(isRingSmall ? "[Faults]\nRule = value ImageSizeBytes set 60000000\n" : ""));
    const TOutcome outcome = Run({"acquire", "--mode", "continuous", "--frames", "150", "--exposure", "0.001",
                                  "--json", "--overwrite", "--output", directory_.Path("cube.fits")});
    ExpectCountsAddUp(outcome);
    EXPECT_EQ(outcome.exitCode, Count(outcome, "overwritten") > 0 ? 5 : 0) << outcome.errors;
    EXPECT_TRUE(!isRingSmall || Count(outcome, "overwritten") > 0);
    EXPECT_EQ(Count(outcome, "lost_in_camera"), 0);
    const TFitsCube cube = ReadFits(directory_.Path("cube.fits"), PixelDepth::Bits16);
    ASSERT_EQ(cube.images, 150);
    EXPECT_EQ(cube.numbers[0] == 1, cube.ticks[0] == 0) << "the clock starts with the first image";
    const std::size_t bytes = cube.pixels.size() / 150;
    for (std::size_t image = 0; image < 150; ++image) {
      const auto* start = reinterpret_cast<const unsigned char*>(cube.pixels.data()) + image * bytes;
      const auto result = vxsim::TCounterPattern::VerifyAny({start, bytes});
      EXPECT_EQ(result.fault, vxsim::EFrameFault::None)
          << "image " << image << ": " << FrameFaultName(result.fault);
      EXPECT_EQ(static_cast<long long>(result.head.frameNumber), cube.numbers[image]);
    }
  }
}

TEST_F(ToolProgram, FailedRunsKeepTheImagesBeforeTheFailure)
{
  Configure(std::string(kSmallCamera) + "[Faults]\nRule = call VX_WaitBuffer at 9 rc 100\n");
  const TOutcome overflow = Run({"acquire", "--frames", "50", "--exposure", "0.001", "--cycle", "0.005", "--json",
                                 "--output", directory_.Path("stack.tif")});
  EXPECT_EQ(overflow.exitCode, 3) << overflow.errors;
  EXPECT_NE(overflow.errors.find("20019 RC_STATUS_HARDWARE_OVERFLOW"), std::string::npos) << overflow.errors;
  ExpectCountsAddUp(overflow);
  const TTiffPages stack = ReadTiff(directory_.Path("stack.tif"));
  EXPECT_EQ(stack.problem, "");
  EXPECT_EQ(static_cast<long>(stack.pages.size()), Count(overflow, "written"));
}

TEST_F(ToolProgram, OutputThatCannotBeWrittenIsSaidWithExitCodeFour)
{
  Configure(kSmallCamera);
  const std::string settings = directory_.Path("run.ini");
  const TOutcome nowhere =
      Run({"acquire", "--output", directory_.Path("no/such/place.tif"), "--save-settings", settings});
  EXPECT_EQ(nowhere.exitCode, 4);
  EXPECT_FALSE(std::filesystem::exists(settings)) << "said before the camera does anything";
  std::ofstream(directory_.Path("precious.tif")) << "precious";
  const TOutcome refused = Run({"acquire", "--output", directory_.Path("precious.tif")});
  EXPECT_EQ(refused.exitCode, 4);
  EXPECT_NE(refused.errors.find("--overwrite"), std::string::npos) << refused.errors;
  const TOutcome device = Run({"acquire", "--output", "/dev/full", "--format", "tiff"});
  EXPECT_EQ(device.exitCode, 4);
  EXPECT_NE(device.errors.find("No space left on device"), std::string::npos) << device.errors;
  const std::string said = directory_.Path("said");
  EXPECT_NE(std::system((VXTOOL_PROGRAM " list --json >/dev/full 2>" + said).c_str()), 0);
  EXPECT_EQ(TextOf(said), "vxmcd: standard output: cannot be written: No space left on device\n");

  const TOutcome full =
      Run({"acquire", "--frames", "20", "--exposure", "0.001", "--json", "--output", directory_.Path("full.tif")},
          3'000'000);
  EXPECT_EQ(full.exitCode, 4) << full.errors;
  ExpectCountsAddUp(full);
  const TTiffPages stack = ReadTiff(directory_.Path("full.tif"));
  EXPECT_EQ(stack.problem, "");
  EXPECT_GT(stack.pages.size(), 0u);
  EXPECT_EQ(static_cast<long>(stack.pages.size()), Count(full, "written"));
}

constexpr const char* kTwoCameras =
    "[Simulator]\nCameras = 2\n[Camera0]\nModel = RQ512_LX\nScene = counter\n"
    "[Camera1]\nModel = RQ512_LX\nScene = counter\nSeed = 2\n[Camera1.SerialNumber]\nValue = RQ-77\n";

// The seed that all images of the file have in common, 0 when they are not frames of one camera.
std::uint32_t SeedHashOf(const TFitsCube& cube)
{
  std::set<std::uint32_t> hashes;
  const std::size_t bytes = cube.pixels.size() / static_cast<std::size_t>(std::max(1L, cube.images));
  for (std::size_t at = 0; at < cube.pixels.size(); at += bytes) {
    const auto* start = reinterpret_cast<const unsigned char*>(cube.pixels.data()) + at;
    const auto result = vxsim::TCounterPattern::VerifyAny({start, bytes});
    hashes.insert(result ? result.head.seedHash : 0);
  }
  return hashes.size() == 1 ? *hashes.begin() : 0;
}

// The line of JSON that a camera has printed.
nlohmann::json ReportOf(const TOutcome& outcome, int camera)
{
  std::istringstream lines(outcome.output);
  for (std::string line; std::getline(lines, line);)
    if (auto json = nlohmann::json::parse(line); json["camera"] == camera) return json;
  ADD_FAILURE() << "no report of camera " << camera << ": " << outcome.output << outcome.errors;
  return {};
}

TEST_F(ToolProgram, CamerasTakeTheirOwnImagesAtTheSameTimeAndOneMayFail)
{
  Configure(std::string(kTwoCameras) + "[Faults]\nRule = call VX_WaitBuffer device 1 at 9 rc 100\n");
  directory_.File("[Settings]\narea = 1,1,64x32\n", "0.ini");
  directory_.File("[Settings]\narea = 1,1,48x16\n", "77.ini");
  const TOutcome outcome =
      Run({"acquire", "--camera", "0", "--camera", "serial:77", "--settings", directory_.Path("{camera}.ini"),
           "--frames", "40", "--exposure", "0.001", "--json", "--output", directory_.Path("{camera}.fits")});
  EXPECT_EQ(outcome.exitCode, 3);
  EXPECT_NE(outcome.errors.find("vxmcd: camera 77: GetStatus: 20019 RC_STATUS_HARDWARE_OVERFLOW"),
            std::string::npos)
      << outcome.errors;
  const nlohmann::json whole = ReportOf(outcome, 0);
  const nlohmann::json failed = ReportOf(outcome, 1);
  EXPECT_EQ(whole["outcome"], "complete");
  EXPECT_EQ(whole["image_width"], 64);
  EXPECT_EQ(failed["outcome"], "failed");
  EXPECT_EQ(failed["image_width"], 48);
  const TFitsCube first = ReadFits(directory_.Path("0.fits"), PixelDepth::Bits16);
  const TFitsCube second = ReadFits(directory_.Path("77.fits"), PixelDepth::Bits16);
  EXPECT_EQ(first.images, 40);
  EXPECT_GT(second.images, 0);
  EXPECT_EQ(second.images, failed["written"]);
  EXPECT_TRUE(SeedHashOf(first) != 0 && SeedHashOf(second) != 0 && SeedHashOf(first) != SeedHashOf(second));
}

TEST_F(ToolProgram, NoCameraIsSetUpUnlessAllCanWriteTheirFiles)
{
  Configure(kTwoCameras);
  for (const char* const link : {"link0", "link1"})
    std::filesystem::create_directory_symlink(directory_.Path("."), directory_.Path(link));
  const TOutcome one = Run({"acquire", "--camera", "0", "--camera", "1", "--preview",
                            directory_.Path("link{camera}/preview.png"), "--overwrite"});
  EXPECT_EQ(one.exitCode, 1);
  EXPECT_NE(one.errors.find("link1/preview.png would be of several cameras"), std::string::npos) << one.errors;
  directory_.File("precious", "1.fits");
  const TOutcome outcome = Run({"acquire", "--camera", "0", "--camera", "1", "--save-settings",
                                directory_.Path("{camera}.ini"), "--output", directory_.Path("{camera}.fits")});
  EXPECT_EQ(outcome.exitCode, 4);
  EXPECT_NE(outcome.errors.find("vxmcd: camera 1: "), std::string::npos) << outcome.errors;
  EXPECT_FALSE(std::filesystem::exists(directory_.Path("0.ini")));
  EXPECT_FALSE(std::filesystem::exists(directory_.Path("0.fits")));
}

TEST_F(ToolProgram, CtrlCEndsTheRecordingsOfAllCameras)
{
  Configure(kTwoCameras);
  int master = -1;
  ASSERT_EQ(openpty(&master, &errorTerminal_, nullptr, nullptr, nullptr), 0);
  const auto directoryOf = [&](int camera) { return directory_.Path("run" + std::to_string(camera)); };
  const auto isRecording = [&](int camera) {
    return HasGrownTo(directoryOf(camera) + "/" + RunFormat::kIndexName, 32 * 50);
  };
  const TOutcome outcome = Interrupt(
      LaunchUntil({"acquire", "--camera", "0", "--camera", "1", "--spool", directory_.Path("run{camera}"),
                   "--frames", "100000", "--exposure", "0.01", "--area", "1,1,64x32", "--json"},
                  [&] { return isRecording(0) && isRecording(1); }));
  std::string said(65536, ' ');
  said.resize(static_cast<std::size_t>(std::max<ssize_t>(0, read(master, said.data(), said.size()))));
  close(master);
  close(errorTerminal_);
  EXPECT_TRUE(std::regex_search(
      said, std::regex("\x1b\\[2Acamera 0: [0-9]+/100000 images, .*\x1b\\[K\r\ncamera 1: [0-9]+/100000 images, ")))
      << said;
  for (const int camera : {0, 1}) {
    TRunDescription run;
    ASSERT_TRUE(run.Read(directoryOf(camera))) << run.Error();
    EXPECT_EQ(run.Values().state, RunFormat::State::kAborted);
    EXPECT_EQ(run.Values().imagesWritten, ReportOf(outcome, camera)["written"]);
  }
}

class ToolProgramInterrupt : public ToolProgram, public ::testing::WithParamInterface<const char*>
{
};

TEST_P(ToolProgramInterrupt, EndsPromptlyAndLeavesAReadableFile)
{
  Configure(kSteadyCamera);
  const std::string path = directory_.Path(GetParam());
  const TOutcome outcome = Interrupt(LaunchUntil(
      {"acquire", "--mode", "continuous", "--exposure", "0.001", "--cycle", "0.02", "--json", "--output", path},
      [&] { return HasGrownTo(path, 2'000'000); }));
  ExpectCountsAddUp(outcome);
  EXPECT_GE(Count(outcome, "written"), 3);
  if (path.back() == 'f') {
    const TTiffPages stack = ReadTiff(path);
    EXPECT_EQ(stack.problem, "");
    EXPECT_EQ(static_cast<long>(stack.pages.size()), Count(outcome, "written"));
    const std::string images = "\nimages=" + std::to_string(stack.pages.size()) + "\n";
    EXPECT_NE(stack.firstDescription.find(images), std::string::npos) << stack.firstDescription;
    std::vector<std::byte> pixels;
    for (const std::vector<std::byte>& page : stack.pages) pixels.insert(pixels.end(), page.begin(), page.end());
    for (const char* program : {kImageJ, kTifffile}) {
      const TReadImages read = ReadWith(program, path);
      EXPECT_EQ(read.images, static_cast<long>(stack.pages.size())) << program;
      EXPECT_TRUE(read.pixels == pixels) << program;
    }
  } else {
    const TFitsCube cube = ReadFits(path, PixelDepth::Bits16);
    EXPECT_EQ(cube.status, 0);
    EXPECT_EQ(cube.images, Count(outcome, "written"));
  }
}

INSTANTIATE_TEST_SUITE_P(Formats, ToolProgramInterrupt, ::testing::Values("stack.tif", "cube.fits"));

} // namespace
} // namespace vxtool
