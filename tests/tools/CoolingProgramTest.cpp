// SPDX-License-Identifier: MIT
// Ramps of the temperature, with a camera whose temperatures change 1000 times as fast as real ones.
#include "tests/tools/ProgramRunner.h"

#include <fstream>
#include <nlohmann/json.hpp>

namespace vxtool {
namespace {

class Cooling : public ToolProgram
{
protected:
  static std::string Camera(const std::string& more = "")
  {
    return std::string(kSteadyCamera) + "TimeScale = 1000\n" + more;
  }
  std::string Errors() const { return TextOf(directory_.Path("err")); }
  static bool Has(const std::string& text, const std::string& part)
  {
    return text.find(part) != std::string::npos;
  }
};

TEST_F(Cooling, RampLeadsToTheTemperatureBeforeTheRunAndBackAfterIt)
{
  Configure(Camera()); // 25 C warm, and takes targets up to 20 C
  const std::string file = directory_.Path("a.tif");
  const TOutcome outcome = Run({"acquire", "--exposure", "0.01", "--temperature", "-10", "--ramp", "800",
                                "--wait-stable", "20", "--warm-up", "--json", "-o", file});
  EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
  const nlohmann::json report = nlohmann::json::parse(outcome.output);
  EXPECT_NEAR(report["celsius_start"].get<double>(), -10.0, 0.6);
  EXPECT_EQ(report["celsius_target"], -10);
  EXPECT_TRUE(Has(outcome.errors, " C on its way to -10 C, 2 s\n")) << outcome.errors;
  EXPECT_TRUE(Has(outcome.errors, " C on its way to 20 C, 2 s\n")) << outcome.errors;
  EXPECT_TRUE(Has(outcome.errors, ", the cooler is off\n")) << outcome.errors;
}

TEST_F(Cooling, InterruptEndsTheRunThenTheWarmUp)
{
  Configure(Camera());
  const std::string file = directory_.Path("a.tif");
  const TOutcome run =
      Interrupt(LaunchUntil({"acquire", "--exposure", "0.01", "--mode", "continuous", "--temperature", "0",
                             "--wait-stable", "--warm-up", "--ramp", "1000", "--json", "-o", file},
                            [&] { return HasGrownTo(file, 2'000'000); }));
  EXPECT_GE(Count(run, "written"), 3);
  EXPECT_TRUE(Has(run.errors, ", the cooler is off\n")) << run.errors;

  Configure(Camera("Ambient = -40\n")); // the cooler cannot warm
  const TOutcome warmUp =
      Interrupt(LaunchUntil({"warm-up", "--json"}, [&] { return Has(Errors(), "on its way to 20 C"); }));
  EXPECT_TRUE(Has(warmUp.errors, "the cooler stays on with the target -3")) << warmUp.errors;
  EXPECT_TRUE(nlohmann::json::parse(warmUp.output)["cooler_on"]) << warmUp.output;
}

TEST_F(Cooling, WarmUpSwitchesTheCoolerOffOrSaysWhyNot)
{
  Configure(Camera("[Camera0.SensorCooling]\nValue = 1\n[Camera0.TargetSensorTemperature]\nValue = 20\n"));
  const TOutcome warm = Run({"warm-up", "--to", "10", "--json"});
  EXPECT_EQ(warm.exitCode, 0) << warm.errors;
  EXPECT_FALSE(nlohmann::json::parse(warm.output)["cooler_on"]) << warm.output;
  EXPECT_TRUE(
      Has(Run({"warm-up", "--to", "90"}).errors, "--to: 90 is not accepted; this camera takes -80 to 20 C"));
  EXPECT_TRUE(Has(Run({"acquire", "--ramp", "5"}).errors, "--ramp: needs --temperature or --warm-up"));
  std::ofstream(directory_.Path("a.tif")) << "precious";
  const TOutcome late = Run({"acquire", "--temperature", "0", "--wait-stable", "-o", directory_.Path("a.tif")});
  EXPECT_TRUE(late.exitCode == 4 && !Has(late.errors, "cooling")) << "refused before it cools: " << late.errors;
  const TOutcome refused = Run({"acquire", "--temperature", "0", "--gain", "99", "--warm-up"});
  EXPECT_TRUE(refused.exitCode == 3 && Has(refused.errors, ", the cooler is off\n")) << refused.errors;
  Configure(Camera("Remove = SensorTemperature\n"));
  const TOutcome unknown = Run({"warm-up"});
  EXPECT_EQ(unknown.exitCode, 3);
  EXPECT_TRUE(Has(unknown.errors, "warm-up: GetTemperatureF: 20991")) << unknown.errors;
}

} // namespace
} // namespace vxtool
