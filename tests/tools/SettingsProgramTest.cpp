// SPDX-License-Identifier: MIT
// The program with files of settings: a run is repeated, options come before the file, mistakes are named.
#include "tests/tools/FileReaders.h"
#include "tests/tools/ProgramRunner.h"

#include <gmock/gmock.h>

namespace vxtool {
namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;

constexpr const char* kModels =
    "[Simulator]\nCameras = 3\n[Camera0]\nClock = free\nScene = dark\n[Camera0.SensorWidth]\nValue = "
    "128\n[Camera0.SensorHeight]\nValue = 96\n[Camera1]\nModel = RQ512_LX\n"
    "Clock = free\n[Camera2]\nModel = TARN 1M\nClock = free\n";

class ToolSettings : public ToolProgram
{
protected:
  // The file of settings that a run with these options stores.
  std::string Stored(std::vector<std::string> options)
  {
    const std::string path = directory_.Path("stored.ini");
    options.insert(options.begin(), {"acquire", "--quiet", "--overwrite", "--save-settings", path});
    const TOutcome outcome = Run(options);
    EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
    errors_ = outcome.errors;
    return TextOf(path);
  }
  std::string ErrorOf(const std::string& settings)
  {
    const TOutcome outcome = Run({"acquire", "--settings", directory_.File(settings, "bad.ini")});
    EXPECT_EQ(outcome.exitCode, 1) << outcome.errors;
    return outcome.errors.substr(0, outcome.errors.find('\n'));
  }

  std::string errors_;
};

TEST_F(ToolSettings, WhatWasStoredIsInForceAgain)
{
  Configure(kModels);
  const std::vector<std::vector<std::string>> runs = {
      {"-c", "0"},
      {"-c", "2", "-n", "3", "-e", "0.0123457", "--cycle", "0.0333333", "--binning", "2x2", "--area", "9,9,64x64"},
      {"-c", "1", "--gain", "3", "--encoding", "Mono12", "--set", "BaselineLevel=50", "--fan", "low",
       "--overlap=off"},
      {"-c", "0", "--tracks", "1-10,20-29", "--gain", "1", "--speed", "0", "--temperature", "-10"},
      {"-c", "0", "-m", "accumulate", "-a", "3", "--cycle", "0.2", "--bits", "16", "--trigger", "software"},
      {"-c", "0", "-n", "2", "-a", "3", "--accumulation-cycle", "0.2", "--baseline-clamp", "off"},
      {"-c", "0", "--interval", "0.3", "-n", "1", "-o", directory_.Path("lapse.tif")},
  };
  for (const std::vector<std::string>& options : runs) {
    const std::string first = Stored(options);
    const std::string file = directory_.File(first, "first.ini");
    EXPECT_EQ(Stored({options[0], options[1], "--settings", file}), first) << ::testing::PrintToString(options);
  }
  const std::string stored = Stored(runs[2]);
  for (const char* line :
       {"\nmodel = RQ512_LX\n", "\nserial = RQ-20417\n", "\nencoding = Mono12\n", "\ngain = 3\n", "\nfan = low\n",
        "\noverlap = off\n", "[Features]\nBaselineLevel = 50\n"})
    EXPECT_THAT(stored, HasSubstr(line));
  EXPECT_THAT(Stored({"-e", "0.00001234567"}), HasSubstr("\nexposure = 1.2345")) << "as the camera has it";
}

TEST_F(ToolSettings, OptionsComeBeforeTheFile)
{
  Configure(kModels);
  const std::string file =
      directory_.File("[Camera]\nmodel = RQ512_LX\n[Settings]\nframes = 5\nexposure = 0.002\ngain = "
                      "1\narea = 1,1,64x64\ncycle = 0.1\n[Features]\nBaselineLevel = 50\n",
                      "settings.ini");
  const std::string stored =
      Stored({"--settings", file, "-e", "0.004", "--left", "11", "--channel", "0", "-n", "1", "--interval", "0.2",
              "--set", "BaselineLevel=60", "-o", directory_.Path("a.tif")});
  for (const char* line : {"exposure = 0.004\n", "area = 11,1,118x96\n", "channel = 0\n", "frames = 1\n",
                           "interval = 0.2\n", "BaselineLevel = 60\n"})
    EXPECT_THAT(stored, HasSubstr(line));
  EXPECT_THAT(stored, ::testing::Not(HasSubstr("gain")));
  EXPECT_THAT(errors_, HasSubstr("settings are of a RQ512_LX, this camera is a TRELLIS CMOS"));
  for (const char* note : {"line 7: area: is left out, since it does not go with --left", "gain: is left out",
                           "line 8: cycle: is left out, since it does not go with --interval"})
    EXPECT_THAT(errors_, HasSubstr(note));
  EXPECT_EQ(Run({"acquire", "--save-settings", file}).exitCode, 4) << "without --overwrite";

  const std::string lapse = directory_.File("[Settings]\nframes = 2\ninterval = 0.1\n", "lapse.ini");
  EXPECT_THAT(Stored({"--settings", lapse, "--mode", "single"}), ::testing::Not(HasSubstr("interval")));
  const std::string series = directory_.File("[Settings]\nmode = series\nframes = 2\n", "series.ini");
  EXPECT_THAT(Stored({"--settings", series, "--interval", "0.5", "-o", directory_.Path("b.tif")}),
              HasSubstr("frames = 2\ninterval = 0.5\n"));
}

TEST_F(ToolSettings, MistakesAreNamedWithTheirLine)
{
  Configure(kModels);
  const std::string bad = directory_.Path("bad.ini");
  const std::pair<const char*, std::string> files[] = {
      {"[Settings]\n\nexposre = 1\n",
       bad + ", line 3: exposre: there is no such setting; the nearest is exposure"},
      {"[Settings]\nexposure = fast\n", bad + ", line 2: exposure: fast is not accepted; a time in s above 0"},
      {"[Settings]\nfan =\n", bad + ", line 2: fan: an empty value is not accepted; full, low or off is"},
      {"[Settings]\noutput = a.tif\n", bad + ", line 2: output: is an option of acquire, but not a setting"},
      {"[Settings]\narea = 1,1,5x5\ntracks = 1-4\n", bad + ", line 3: tracks: does not go with area"},
      {"[Settings]\ngain = 1\ngain = 2\n", "--settings: " + bad + ", line 3: gain: stands in line 2, too"},
      {"gain = 1\n", "--settings: " + bad + ", line 1: gain: stands before the first section"},
      {"[Setings]\n", "--settings: " + bad + ", line 1: [Setings]: there is no such section"},
      {"[Settings]\njunk\n", "--settings: " + bad + ", line 2: junk is not accepted; KEY = VALUE is"},
      {"[Settings]\ngain = \x1b[2J\n", "--settings: " + bad + ", line 2: is not text"},
      {"[Camera]\nmodle = x\n", bad + ", line 2: modle: there is no such key"},
  };
  for (const auto& [text, message] : files) EXPECT_THAT(ErrorOf(text), StartsWith(message));
  EXPECT_THAT(Run({"acquire", "--settings", "none.ini"}).errors,
              StartsWith("--settings: none.ini: cannot be read"));
  EXPECT_THAT(
      Run({"acquire", "--settings", directory_.File("[Settings]\ngain = 9\n", "bad.ini")}).errors,
      HasSubstr("vxmcd: --gain: 9 is not accepted; this camera has 3 gains, 0 to 2; vxmcd info lists them; the "
                "settings of " +
                bad));
}

} // namespace
} // namespace vxtool
