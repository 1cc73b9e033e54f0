// SPDX-License-Identifier: MIT
// Runs: how many images, which, and when.
#include "tools/check/CameraRuns.h"
#include "tools/check/Checks.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <thread>

namespace vxtool {

namespace {

constexpr double kRunSeconds = 1.0; ///< how long a run until abort may take
constexpr double kClockCycle = 0.01;

long ImagesOfRun(TCheckContext& check)
{
  return std::clamp(static_cast<long>(kRunSeconds / CycleSeconds(check)), 5L, 50L);
}

template <typename Number>
Number MedianOf(std::vector<Number> numbers)
{
  std::nth_element(numbers.begin(), numbers.begin() + static_cast<std::ptrdiff_t>(numbers.size() / 2),
                   numbers.end());
  return numbers[numbers.size() / 2];
}

std::vector<long long> StepsOf(const std::vector<long long>& ticks)
{
  std::vector<long long> steps;
  for (std::size_t image = 1; image < ticks.size(); ++image) steps.push_back(ticks[image] - ticks[image - 1]);
  return steps;
}

// A run until abort, of which this many images have come.
long RunUntilAbort(TCheckContext& check)
{
  const long images = ImagesOfRun(check);
  StartRun(check, RunKind::UntilAborted);
  check.Need("a run until abort gives no images", WaitForImages(check, images));
  check.Need("AbortAcquisition", CHECK_CALL(check, AbortAcquisition));
  return images;
}

} // namespace

void TakesSeries(TCheckContext& check)
{
  for (const int images : {1, 2, 3, 5, 8, 13, 21, 34}) {
    const std::string what = "a series of " + std::to_string(images);
    TCheckContext::ExpectCode(what + ": SetAcquisitionMode", RC_SUCCESS, CHECK_CALL(check, SetAcquisitionMode, 3));
    TCheckContext::ExpectCode(what + ": SetNumberKinetics", RC_SUCCESS,
                              CHECK_CALL(check, SetNumberKinetics, images));
    TCheckContext::ExpectCode(what + ": StartAcquisition", RC_SUCCESS, CHECK_CALL(check, StartAcquisition));
    const bool isIdle = WaitUntilIdle(check, images);
    const int status = Status(check);
    TCheckContext::Expect(isIdle, what + ": the status at its end",
                          TCheckContext::CodeText(static_cast<unsigned int>(RC_IDLE)),
                          TCheckContext::CodeText(static_cast<unsigned int>(status)));
    TCheckContext::ExpectEqual(what + ": images", static_cast<long>(images), TotalImages(check));
    int first = 0;
    int last = 0;
    CHECK_CALL(check, GetNumberAvailableImages, &first, &last);
    TCheckContext::ExpectEqual(what + ": the first image that is there", 1, first);
    TCheckContext::ExpectEqual(what + ": the last image that is there", images, last);
  }
}

void AbortsAtAnyTime(TCheckContext& check)
{
  for (const int milliseconds : {0, 1, 5, 20, 50}) {
    StartRun(check, RunKind::UntilAborted);
    std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds)); // the moment is what is tried
    const std::string what = "an abort after " + std::to_string(milliseconds) + " ms";
    TCheckContext::ExpectCode(what, RC_SUCCESS, CHECK_CALL(check, AbortAcquisition));
    TCheckContext::ExpectEqual("the status after " + what, static_cast<int>(RC_IDLE), Status(check));
    TCheckContext::Expect(!IsAcquiring(check), "the camera after " + what, "idle", "still acquiring");
    const long images = TotalImages(check);
    std::this_thread::sleep_for(std::chrono::milliseconds(5)); // no image may come now
    TCheckContext::ExpectEqual("images a while after " + what, images, TotalImages(check));
    TCheckContext::ExpectCode("an abort without a run", RC_IDLE, CHECK_CALL(check, AbortAcquisition));
  }
}

void RunsAfterAbort(TCheckContext& check)
{
  RunUntilAbort(check);
  StartRun(check, RunKind::Series, 2);
  const bool isIdle = WaitUntilIdle(check, 2);
  const long total = TotalImages(check);
  check.Need("the series after an abort does not end well", isIdle);
  TCheckContext::ExpectEqual("images of a series of 2 after an abort", 2L, total);
  int first = 0;
  int last = 0;
  CHECK_CALL(check, GetNumberAvailableImages, &first, &last);
  TCheckContext::ExpectEqual("the number of its first image", 1, first);
}

void RunsWithoutGaps(TCheckContext& check)
{
  const long images = RunUntilAbort(check);
  const auto lost = check.HasFeature(L"FramesLost") ? check.Int(L"FramesLost") : std::nullopt;
  TCheckContext::ExpectEqual("lost images, as the camera counts", 0LL, lost.value_or(0));
  const std::vector<long long> ticks = Ticks(check, images);
  if (std::all_of(ticks.begin(), ticks.end(), [](long long tick) { return tick == 0; }))
    TCheckContext::Skip("images have no clock values");
  const std::vector<long long> steps = StepsOf(ticks);
  check.Need("clock values do not rise",
             std::all_of(steps.begin(), steps.end(), [](long long step) { return step > 0; }));
  const long long usual = MedianOf(steps);
  for (std::size_t image = 0; image < steps.size(); ++image)
    TCheckContext::Expect(static_cast<double>(steps[image]) < 1.5 * static_cast<double>(usual),
                          "ticks from image " + std::to_string(image + 1) + " to the next",
                          std::to_string(usual) + ", as mostly",
                          std::to_string(steps[image]) + ": images are missing");
}

void HasRisingClock(TCheckContext& check)
{
  if (CHECK_CALL(check, SetMetaData, 1) == RC_NOT_SUPPORTED)
    TCheckContext::Skip("the camera puts no clock values into images");
  CHECK_CALL(check, SetKineticCycleTime, kClockCycle); // one that no camera misses for want of speed
  const double cycle = CycleSeconds(check);
  const std::vector<long long> steps = StepsOf(Ticks(check, RunUntilAbort(check)));
  for (std::size_t image = 0; image < steps.size(); ++image)
    TCheckContext::Expect(steps[image] > 0, "ticks from image " + std::to_string(image + 1) + " to the next",
                          "above 0", std::to_string(steps[image]));
  const auto hertz = check.Int(L"TimestampClockFrequency");
  check.Need("the camera does not say how fast its clock is", hertz && *hertz > 0);
  const long long usual = MedianOf(steps);
  std::vector<long long> deviations;
  deviations.reserve(steps.size());
  for (const long long step : steps) deviations.push_back(std::abs(step - usual));
  const double jitter = static_cast<double>(MedianOf(deviations)) / static_cast<double>(*hertz);
  const double period = static_cast<double>(usual) / static_cast<double>(*hertz);
  constexpr double kRelative = 0.01;
  constexpr double kJitters = 5.0;
  TCheckContext::ExpectWithin("seconds from image to image, by the camera's clock", cycle,
                              kRelative * cycle + kJitters * jitter + 1.0 / static_cast<double>(*hertz), period);
}

void AnswersSoftwareTriggers(TCheckContext& check)
{
  if (CHECK_CALL(check, SetTriggerMode, 10) == RC_INVALID_TRIGGER_MODE)
    TCheckContext::Skip("the camera has no software trigger");
  StartRun(check, RunKind::UntilAborted);
  const std::chrono::duration<double> pause(CycleSeconds(check) + 0.005); // a sensor that is busy ignores triggers
  std::this_thread::sleep_for(pause);
  TCheckContext::ExpectEqual("images before a trigger", 0L, TotalImages(check));
  for (long trigger = 1; trigger <= 5; ++trigger) {
    TCheckContext::ExpectCode("SendSoftwareTrigger", RC_SUCCESS, CHECK_CALL(check, SendSoftwareTrigger));
    WaitForImages(check, trigger);
    std::this_thread::sleep_for(pause);
    TCheckContext::ExpectEqual("images after as many triggers", trigger, TotalImages(check));
  }
}

void AddsExposures(TCheckContext& check)
{
  constexpr int kExposures = 4;
  constexpr double kRelative = 0.05;
  constexpr double kSteady = 0.02;
  constexpr double kCounts = 2.0;
  constexpr double kDarkest = 20.0; // below, the sum is not to be told from its parts
  const auto median = [&check] {
    std::vector<int> pixels(ImageSize(check).Pixels());
    check.Need("GetMostRecentImage", CHECK_CALL(check, GetMostRecentImage, pixels.data(), pixels.size()));
    return static_cast<double>(MedianOf(pixels));
  };
  const auto expose = [&](int count) {
    const unsigned int code = CHECK_CALL(check, SetNumberAccumulations, count);
    if (code == RC_NOT_SUPPORTED) TCheckContext::Skip("the camera cannot add exposures up");
    TakeSeries(check, 2);
    return median();
  };
  const TEncoding wide(check, L"Mono32"); // a narrower one may not have room for sums, or another scale
  const double one = expose(1);
  const double sum = expose(kExposures);
  const double after = expose(1);
  if (one < kDarkest) TCheckContext::Skip("the images are too dark");
  if (std::abs(one - after) > kSteady * one) TCheckContext::Skip("the brightness changes from image to image");
  TCheckContext::ExpectWithin("the median pixel of " + std::to_string(kExposures) + " exposures", kExposures * one,
                              kExposures * (kRelative * one + kCounts), sum);
}

} // namespace vxtool
