// SPDX-License-Identifier: MIT
// Timing: clock, processors' speed, and whether images come when they should.
#include "tools/doctor/Checks.h"
#include "tools/doctor/SystemFiles.h"
#include "tools/Messages.h"
#include "vxmcd.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdlib>

namespace vxtool {

namespace {

using TClock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds kRunTime(2000);
constexpr int kWaitMs = 500;
constexpr int kUntilAborted = 5; ///< acquisition mode
constexpr double kLongestSlackSeconds = 1e-3;
constexpr double kLateShare = 0.05; ///< of the images that may come late before it is a warning

void CheckClock(TFindings& findings)
{
  const std::string source = FirstLineOf("/sys/devices/system/clocksource/clocksource0/current_clocksource");
  if (source == "hpet" || source == "acpi_pm" || source == "jiffies")
    findings.Warn("the system's clock is read slowly: clock source " + source,
                  "see `dmesg | grep -i clocksource` for why it is not tsc");
  else if (!source.empty())
    findings.Right("clock source " + source);
}

void CheckGovernor(TFindings& findings)
{
  const std::string directory = "/sys/devices/system/cpu/cpu0/cpufreq/";
  const std::string governor = FirstLineOf(directory + "scaling_governor");
  const std::string driver = FirstLineOf(directory + "scaling_driver");
  // With these two drivers the processor itself speeds up under load.
  const bool isSlow = governor == "powersave" && driver != "intel_pstate" && !driver.starts_with("amd-pstate");
  if (isSlow)
    findings.Warn("the processors stay at their lowest speed: governor powersave",
                  "sudo cpupower frequency-set -g performance");
  else if (!governor.empty())
    findings.Right("governor " + governor);
}

void CheckTimerSlack(TFindings& findings)
{
  const double slack = std::strtod(FirstLineOf("/proc/self/timerslack_ns").c_str(), nullptr) * 1e-9;
  if (slack > kLongestSlackSeconds)
    findings.Warn("the system lets waits end " + std::to_string(slack * 1e3) + " ms late (timer slack)",
                  "start the program outside the service or container that sets it");
}

/// What came of a run.
struct TRunFigures
{
  long images = 0;
  double longestSeconds = 0.0; ///< between two images
  double seconds = 0.0;        ///< from the first image to the last
  std::optional<long> lost;
};

TRunFigures TakeImages(TFlatCamera& camera)
{
  TRunFigures figures;
  const auto end = TClock::now() + kRunTime;
  std::optional<TClock::time_point> first;
  TClock::time_point last;
  while (TClock::now() < end && camera.Wait(kWaitMs) == RC_SUCCESS) {
    const auto now = TClock::now();
    if (!first)
      first = now;
    else
      figures.longestSeconds = std::max(figures.longestSeconds, std::chrono::duration<double>(now - last).count());
    last = now;
    camera.TotalImages(figures.images);
  }
  if (first) figures.seconds = std::chrono::duration<double>(last - *first).count();
  figures.lost = camera.LostFrames();
  return figures;
}

void CheckImages(TFindings& findings, TFlatCamera& camera)
{
  float exposure = 0.0F;
  float accumulate = 0.0F;
  float kinetic = 0.0F;
  if (const unsigned int code = SetAcquisitionMode(kUntilAborted); code != RC_SUCCESS)
    return findings.Problem(ResultText("SetAcquisitionMode", code), "VXMCD_LOG=debug vxmcd doctor --only timing");
  if (const unsigned int code = camera.Start(); code != RC_SUCCESS)
    return findings.Problem("no run starts: " + ResultText("StartAcquisition", code),
                            "VXMCD_LOG=debug vxmcd doctor --only timing");
  GetAcquisitionTimings(&exposure, &accumulate, &kinetic);
  const TRunFigures figures = TakeImages(camera);
  camera.Abort();
  const double cycle = static_cast<double>(kinetic);
  if (figures.images == 0) {
    if (cycle * 1e3 >= kWaitMs) return findings.Right("one image takes longer than this trial");
    return findings.Problem("a run gave no image within " + std::to_string(kWaitMs) + " ms",
                            "check the trigger and the cable; VXMCD_LOG=info vxmcd acquire --output a.tif");
  }
  char text[160];
  std::snprintf(text, sizeof text, "%ld images in %.2f s (%.4g /s expected), at most %.1f ms apart",
                figures.images, figures.seconds, cycle > 0.0 ? 1.0 / cycle : 0.0, figures.longestSeconds * 1e3);
  const double expected = cycle > 0.0 ? figures.seconds / cycle : 0.0;
  if (figures.lost.value_or(0) > 0)
    findings.Problem(std::string(text) + "; " + std::to_string(*figures.lost) + " were lost",
                     "docs/real-cameras.md has what to tune");
  else if (static_cast<double>(figures.images) < (1.0 - kLateShare) * expected - 1.0)
    findings.Warn(std::string(text) + ": too few", "close other programs; is the machine busy?");
  else
    findings.Right(text);
}

} // namespace

void CheckTiming(TFindings& findings, TFlatCamera* camera)
{
  CheckClock(findings);
  CheckGovernor(findings);
  CheckTimerSlack(findings);
  if (camera) CheckImages(findings, *camera);
}

} // namespace vxtool
