// SPDX-License-Identifier: MIT
// Single images on a schedule, with intervals of a fraction of a second in place of minutes.
#include "runs/host_time.h"
#include "tests/tools/FileReaders.h"
#include "tests/tools/ProgramRunner.h"

#include <nlohmann/json.hpp>

namespace vxtool {
namespace {

class TimeLapse : public ToolProgram
{
protected:
  TOutcome Take(const std::vector<std::string>& options)
  {
    std::vector<std::string> arguments = {"acquire", "--exposure",  "0.005", "--bits", "32",
                                          "--json",  "--overwrite", "-o",    cube_};
    arguments.insert(arguments.end(), options.begin(), options.end());
    return Run(arguments);
  }
  TFitsCube Cube() const { return ReadFits(cube_, PixelDepth::Bits32); }

  const std::string cube_ = directory_.Path("cube.fits");
};

TEST_F(TimeLapse, ImagesStartAtTheTimesOfTheSchedule)
{
  Configure(std::string(kSteadyCamera) + "TriggerPeriod = 0.02\nTriggerWidth = 0.005\n");
  for (const std::vector<std::string>& options : {std::vector<std::string>{"--timeout", "10"},
                                                  {"--mode", "accumulate", "-a", "2"},
                                                  {"--trigger", "software"},
                                                  {"--trigger", "external"}}) {
    SCOPED_TRACE(::testing::PrintToString(options));
    std::vector<std::string> arguments = options;
    arguments.insert(arguments.end(), {"--interval", "0.2", "--frames", "4"});
    const TOutcome outcome = Take(arguments);
    // On a busy machine an image may miss its time; then it is counted.
    const long missed = Count(outcome, "missed");
    EXPECT_EQ(outcome.exitCode, missed > 0 ? 5 : 0) << outcome.errors;
    EXPECT_EQ(Count(outcome, "written") + missed, 4);
    EXPECT_GE(nlohmann::json::parse(outcome.output)["seconds"].get<double>(), 0.6)
        << "three intervals and an image";
    const TFitsCube cube = Cube();
    EXPECT_EQ(cube.numbers.front(), 1);
    ASSERT_EQ(static_cast<long>(cube.hostTimes.size()), cube.images);
    EXPECT_GT(cube.hostTimes.back() - cube.hostTimes.front(), 300'000'000) << "in ns";
    EXPECT_GE(cube.ticks.front(), 0);
    if (options.front() == "--mode") {
      const std::optional<std::int64_t> start = HostTimeOf(cube.dateObs + "000Z");
      ASSERT_TRUE(start) << cube.dateObs;
      EXPECT_LT(cube.hostTimes.front() - *start, 50'000'000) << "the interval is no part of the image";
    }
  }
}

TEST_F(TimeLapse, LostImageAndTimesThatPassedLeaveGapsAndTheScheduleGoesOn)
{
  Configure(std::string(kSteadyCamera) + "[Faults]\nRule = frame 2 drop\n"); // noticed after more than a second
  const TOutcome outcome = Take({"--interval", "0.2", "--frames", "12"});
  EXPECT_EQ(outcome.exitCode, 5) << outcome.errors;
  EXPECT_EQ(Count(outcome, "lost_in_camera"), 1);
  EXPECT_GE(Count(outcome, "missed"), 4);
  EXPECT_EQ(Count(outcome, "written") + Count(outcome, "missed") + 1, 12);
  const TFitsCube cube = Cube();
  EXPECT_EQ(cube.numbers.front(), 1);
  EXPECT_GT(cube.numbers.at(1), 6) << "no burst of images makes up for the time";
  for (const char* text : {"vxmcd: image 2 is missing, the schedule goes on: GetStatus: 20017", "images 3 to ",
                           "are missing: the time had passed"})
    EXPECT_NE(outcome.errors.find(text), std::string::npos) << outcome.errors;

  Configure(std::string(kSteadyCamera) + "[Faults]\nRule = frame 2 drop\nRule = frame 3 drop\n");
  const TOutcome broken = Take({"--interval", "0.2", "--frames", "100"});
  EXPECT_EQ(broken.exitCode, 3) << "a camera that sends nothing any more does not go unnoticed for hours";
  EXPECT_EQ(Cube().images, 1);
}

TEST_F(TimeLapse, InterruptBetweenImagesKeepsThem)
{
  Configure(kSteadyCamera);
  const auto isWaiting = [this] {
    return TextOf(directory_.Path("err")).find("1 images, next image in 9") != std::string::npos;
  };
  const TOutcome outcome = Interrupt(
      LaunchUntil({"acquire", "--exposure", "0.01", "--interval", "1000", "--json", "-o", cube_}, isWaiting));
  EXPECT_EQ(Count(outcome, "written"), 1);
  EXPECT_EQ(Cube().images, 1);
}

TEST_F(TimeLapse, RefusesWhatDoesNotGoTogether)
{
  Configure(kSteadyCamera);
  const std::tuple<std::vector<std::string>, int, const char*> wrong[] = {
      {{"--mode", "continuous"}, 1, "--interval: takes single images"},
      {{"--spool", directory_.Path("run")}, 1, "--interval: --spool records one run"},
      {{"--cycle", "0.1"}, 1, "--cycle: --interval is the time"},
      {{"--exposure", "2"}, 1, "--interval: is shorter than the exposure"},
      {{"--exposure", "0.9995"}, 3, "--interval: 1 is not accepted; an image takes 1"},
  };
  for (const auto& [options, code, message] : wrong) {
    std::vector<std::string> arguments = {"acquire", "--interval", "1"};
    arguments.insert(arguments.end(), options.begin(), options.end());
    const TOutcome outcome = Run(arguments);
    EXPECT_EQ(outcome.exitCode, code) << message;
    EXPECT_NE(outcome.errors.find(message), std::string::npos) << outcome.errors;
  }
}

} // namespace
} // namespace vxtool
