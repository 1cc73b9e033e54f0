// SPDX-License-Identifier: MIT
// Runs that the library records to disk, from the camera to the converted file: every image bit for bit, and what is
// left when the run, the program or the disk comes to an end too early.
#include "runs/TRunDescription.h"
#include "tests/support/TMadeRun.h"
#include "tests/tools/FileReaders.h"
#include "tests/tools/ProgramRunner.h"
#include "vxcore/simulated/imaging/TCounterPattern.h"

#include <csignal>
#include <fcntl.h>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sys/file.h>
#include <unistd.h>

namespace vxtool {
namespace {

namespace fs = std::filesystem;

constexpr const char* kCounterCamera =
    "[Simulator]\nCameras = 1\n[Camera0]\nModel = RQ512_LX\nClock = free\nScene = counter\n";
constexpr const char* kSteadyCounterCamera =
    "[Simulator]\nCameras = 1\n[Camera0]\nModel = RQ512_LX\nScene = counter\n";

class RecordProgram : public ToolProgram
{
protected:
  std::string Directory() const { return directory_.Path("run"); }
  std::vector<std::string> Record(std::vector<std::string> options) const
  {
    options.insert(options.begin(), {"acquire", "--spool", Directory(), "--exposure", "0.001", "--json"});
    return options;
  }

  // Every image of the cube is a whole frame of the camera, with the number that the table says.
  static void ExpectWholeFrames(const TFitsCube& cube)
  {
    ASSERT_GT(cube.images, 0);
    const std::size_t bytes = cube.pixels.size() / static_cast<std::size_t>(cube.images);
    for (std::size_t image = 0; image < static_cast<std::size_t>(cube.images); ++image) {
      const auto* start = reinterpret_cast<const unsigned char*>(cube.pixels.data()) + image * bytes;
      const auto result = vxsim::TCounterPattern::VerifyAny({start, bytes});
      ASSERT_EQ(result.fault, vxsim::EFrameFault::None)
          << "image " << image << ": " << FrameFaultName(result.fault);
      ASSERT_EQ(static_cast<long long>(result.head.frameNumber), cube.numbers[image]);
    }
  }

  // Starts a recording and waits until so many records are in its index.
  pid_t RecordUntil(std::uintmax_t records, const std::vector<std::string>& options)
  {
    return LaunchUntil(Record(options),
                       [&] { return HasGrownTo(Directory() + "/" + RunFormat::kIndexName, 32 * records); });
  }
};

TEST_F(RecordProgram, RecordedImagesAndFactsAreThoseThatTheLibraryReturns)
{
  Configure("[Simulator]\nCameras = 1\n[Camera0]\nScene = resolution chart\nNoise = off\nClock = free\n"
            "Model = RQ512_LX\n[Camera0.PixelEncoding]\nValue = Mono12Packed\n");
  const std::vector<std::string> options = {"--frames",    "3",    "--area",        "101,201,333x50",
                                            "--exposure",  "0.01", "--bits",        "16",
                                            "--amplifier", "0",    "--gain",        "1",
                                            "--speed",     "0",    "--temperature", "-10"};
  std::vector<std::string> direct = {"acquire", "--output", directory_.Path("direct.tif")};
  direct.insert(direct.end(), options.begin(), options.end());
  ASSERT_EQ(Run(direct).exitCode, 0);
  std::vector<std::string> recorded = {"acquire", "--spool", Directory(), "--output", directory_.Path("disk.tif")};
  recorded.insert(recorded.end(), options.begin(), options.end());
  const TOutcome outcome = Run(recorded);
  ASSERT_EQ(outcome.exitCode, 0) << outcome.errors;
  const TTiffPages memory = ReadTiff(directory_.Path("direct.tif"));
  const TTiffPages disk = ReadTiff(directory_.Path("disk.tif"));
  EXPECT_EQ(disk.problem, "");
  ASSERT_EQ(disk.pages.size(), 3u);
  EXPECT_EQ(disk.pages, memory.pages);
  EXPECT_NE(disk.pages[0], std::vector<std::byte>(disk.pages[0].size())) << "a picture of something";
  ASSERT_EQ(Run({"convert", Directory(), "--output", directory_.Path("later.tif")}).exitCode, 0);
  const TTiffPages later = ReadTiff(directory_.Path("later.tif"));
  for (const char* key : {"\ncamera=", "\nserial=", "\narea=", "\nbinning=", "\nexposure_s=", "\ntrigger=",
                          "\nsensor_C=", "\ntarget_C=", "\ngain=", "\nspeed_MHz=", "\namplifier="}) {
    const auto line = [key](const TTiffPages& file) {
      const std::size_t at = file.firstDescription.find(key);
      return at == std::string::npos
                 ? "nothing"
                 : file.firstDescription.substr(at + 1, file.firstDescription.find('\n', at + 1) - at);
    };
    EXPECT_EQ(line(disk), line(memory)) << key;
    EXPECT_NE(line(disk), "nothing") << key;
    EXPECT_EQ(line(later), key == std::string("\namplifier=") ? "nothing" : line(memory)) << key;
  }
}

TEST_F(RecordProgram, InterruptKeepsWhatWasWrittenAndSaysHowMuch)
{
  Configure(kSteadyCounterCamera);
  const TOutcome outcome = Interrupt(RecordUntil(5, {"--frames", "100000", "--output", directory_.Path("a.tif")}));
  ExpectCountsAddUp(outcome);
  const long written = Count(outcome, "written");
  EXPECT_GE(written, 5);
  EXPECT_NE(outcome.errors.find(std::to_string(written) + " of 100000 images are in " + Directory()),
            std::string::npos)
      << outcome.errors;
  EXPECT_NE(outcome.errors.find("vxmcd convert"), std::string::npos) << outcome.errors;
  const TOutcome converted = Run({"convert", Directory(), "--json", "-o", directory_.Path("a.fits")});
  EXPECT_EQ(converted.exitCode, 0) << converted.errors;
  EXPECT_EQ(Count(converted, "written"), written);
  ExpectWholeFrames(ReadFits(directory_.Path("a.fits"), PixelDepth::Bits16));
}

TEST_F(RecordProgram, DescriptionThatCannotBeReadIsNotTakenForAnEmptyDisk)
{
  Configure(kSteadyCounterCamera);
  const pid_t child = RecordUntil(5, {"--frames", "100000"});
  const std::string description = Directory() + "/" + RunFormat::kDescriptionName;
  fs::remove(description);
  fs::create_directory(description);
  kill(child, SIGINT);
  const TOutcome outcome = Finish(child);
  EXPECT_EQ(outcome.exitCode, 4) << outcome.errors;
  EXPECT_NE(outcome.errors.find("is not a regular file: it is not known how many images are on the disk"),
            std::string::npos)
      << outcome.errors;
  EXPECT_TRUE(nlohmann::json::parse(outcome.output)["written"].is_null()) << outcome.output;
}

TEST_F(RecordProgram, FullDiskIsExplainedAndTheImagesBeforeAreThere)
{
  Configure(kCounterCamera);
  const TOutcome outcome = Run(Record({"--frames", "1000000000", "--spool-method", "single"}), 400'000);
  EXPECT_NE(outcome.errors.find("warning: the run needs 52"), std::string::npos) << outcome.errors; // 520 TB
  EXPECT_EQ(outcome.exitCode, 4) << outcome.errors;
  EXPECT_NE(outcome.errors.find("20026 RC_STATUS_SPOOL_ISSUE"), std::string::npos) << outcome.errors;
  EXPECT_NE(outcome.errors.find("check free space and permissions"), std::string::npos) << outcome.errors;
  EXPECT_EQ(Count(outcome, "written"), 0) << "no image fits into a file";
  fs::create_directory(directory_.Path("file"));
  std::ofstream(directory_.Path("file") + "/x") << "in the way";
  const TOutcome blocked = Run({"acquire", "--frames", "5", "--spool", directory_.Path("file") + "/x/y"});
  EXPECT_EQ(blocked.exitCode, 4) << blocked.errors;
  EXPECT_NE(blocked.errors.find("/x/y: cannot be recorded into: Not a directory"), std::string::npos)
      << blocked.errors;
}

TEST_F(RecordProgram, FramesLostInTheCameraAreCounted)
{
  Configure(std::string(kCounterCamera) + "[Faults]\nRule = frame 20 drop\nRule = frame 41 drop\n");
  const TOutcome outcome = Run(Record({"--frames", "60", "--cycle", "0.005"}));
  EXPECT_EQ(outcome.exitCode, 5) << outcome.errors;
  ExpectCountsAddUp(outcome);
  EXPECT_EQ(Count(outcome, "lost_in_camera"), 2);
  EXPECT_EQ(Count(outcome, "written"), 58);
  EXPECT_EQ(Count(Run({"convert", Directory(), "--json", "--verify"}), "lost_in_camera"), 2);
}

TEST_F(RecordProgram, WhatIsThereAlreadyIsNotReplacedUnasked)
{
  Configure(kCounterCamera);
  const TOutcome first = Run(Record({"--frames", "3"}));
  ASSERT_EQ(first.exitCode, 0);
  EXPECT_EQ(first.errors.find("warning"), std::string::npos) << first.errors;
  const std::string description = TextOf(Directory() + "/" + RunFormat::kDescriptionName);
  const TOutcome refused = Run(Record({"--frames", "4"}));
  EXPECT_EQ(refused.exitCode, 4);
  EXPECT_NE(refused.errors.find("--overwrite"), std::string::npos) << refused.errors;
  PutFileBytes(directory_.Path("precious.tif"), "precious");
  EXPECT_EQ(Run({"acquire", "--frames", "4", "--spool", directory_.Path("new"), "--output",
                 directory_.Path("precious.tif")})
                .exitCode,
            4);
  EXPECT_FALSE(fs::exists(directory_.Path("new"))) << "said before the first image";
  EXPECT_EQ(TextOf(Directory() + "/" + RunFormat::kDescriptionName), description);
  const int lock = open(Directory().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  ASSERT_EQ(flock(lock, LOCK_EX), 0); // as a program does that records into it
  const TOutcome locked = Run(Record({"--frames", "4", "--overwrite"}));
  EXPECT_EQ(locked.exitCode, 4) << locked.errors;
  EXPECT_NE(locked.errors.find(": another run is being recorded into it"), std::string::npos) << locked.errors;
  close(lock);
  PutFileBytes(Directory() + "/notes.txt", "mine");
  EXPECT_EQ(Run(Record({"--frames", "4", "--overwrite"})).exitCode, 0);
  EXPECT_EQ(Count(Run({"convert", Directory(), "--verify", "--json"}), "right"), 4);
  EXPECT_EQ(TextOf(Directory() + "/notes.txt"), "mine");
}

TEST_F(RecordProgram, OptionsThatDoNotGoTogetherAreRefused)
{
  Configure(kCounterCamera);
  const TOutcome endless = Run({"acquire", "--spool", Directory(), "--mode", "continuous"});
  EXPECT_EQ(endless.exitCode, 1);
  EXPECT_NE(endless.errors.find("never recorded to disk"), std::string::npos) << endless.errors;
  EXPECT_EQ(Run({"acquire", "--spool-threads", "2"}).exitCode, 1);
  EXPECT_EQ(Run({"acquire", "--spool", Directory(), "--spool-threads", "0"}).exitCode, 1);
  EXPECT_EQ(Run({"acquire", "--spool", Directory() + "\\a"}).exitCode, 1) << "another directory would be made";
  EXPECT_FALSE(fs::exists(Directory()));
  Configure(std::string(kSteadyCounterCamera));
  const TOutcome late = Run(Record({"--frames", "5", "--trigger", "external", "--timeout", "0.3"}));
  EXPECT_EQ(late.exitCode, 3) << late.errors;
  EXPECT_NE(late.errors.find("no image within the time limit"), std::string::npos) << late.errors;
}

} // namespace
} // namespace vxtool
