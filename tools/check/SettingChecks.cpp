// SPDX-License-Identifier: MIT
// Settings: what they take, and what they read back as.
#include "tools/check/CameraRuns.h"
#include "tools/check/Checks.h"

#include <algorithm>
#include <cmath>
#include <set>

namespace vxtool {

namespace {

constexpr double kRelative = 1e-3; ///< how far a setting may read back from what was set
constexpr int kSteps = 24;         ///< exposures that are tried
constexpr double kSingle = 1e-6;   ///< what rounding to single precision changes, relatively
constexpr int kNoMode = 999;       ///< that no function knows

struct TRange
{
  double low = 0.0;
  double high = 0.0;
};

TRange RangeOf(TCheckContext& check, const wchar_t* feature)
{
  TRange range;
  const int handle = check.FeatureHandle();
  check.Need("the camera does not say the limits of a time",
             CHECK_CALL(check, VX_GetFloatMin, handle, feature, &range.low) == VX_SUCCESS &&
                 CHECK_CALL(check, VX_GetFloatMax, handle, feature, &range.high) == VX_SUCCESS);
  return range;
}

double Exposure(TCheckContext& check)
{
  const auto seconds = check.Float(L"ExposureTime");
  check.Need("the exposure cannot be read", seconds.has_value());
  return *seconds;
}

double Kinetic(TCheckContext& check)
{
  float exposure = 0.0F;
  float accumulate = 0.0F;
  float kinetic = 0.0F;
  CHECK_CALL(check, GetAcquisitionTimings, &exposure, &accumulate, &kinetic);
  return static_cast<double>(kinetic);
}

} // namespace

void KeepsExposures(TCheckContext& check)
{
  const TRange range = RangeOf(check, L"ExposureTime");
  const double low = std::max(range.low, 1e-6);
  for (int step = 0; step <= kSteps; ++step) {
    auto wanted = static_cast<float>(low * std::pow(range.high / low, static_cast<double>(step) / kSteps));
    while (static_cast<double>(wanted) > range.high) wanted = std::nextafterf(wanted, 0.0F);
    TCheckContext::ExpectCode("SetExposureTime(" + TCheckContext::Shown(wanted) + ")", RC_SUCCESS,
                              CHECK_CALL(check, SetExposureTime, wanted));
    TCheckContext::ExpectWithin("the exposure that was set", static_cast<double>(wanted),
                                std::max(kRelative * static_cast<double>(wanted), low), Exposure(check));
  }
}

void LimitsExposures(TCheckContext& check)
{
  const TRange range = RangeOf(check, L"ExposureTime");
  if (range.low > 0.0) {
    TCheckContext::ExpectCode("an exposure below the shortest", RC_SUCCESS,
                              CHECK_CALL(check, SetExposureTime, range.low / 2));
    TCheckContext::ExpectWithin("the exposure then", range.low, kRelative * range.low, Exposure(check));
  }
  const double before = Exposure(check);
  TCheckContext::ExpectCode("an exposure above the longest", RC_P1_INVALID,
                            CHECK_CALL(check, SetExposureTime, range.high * 2));
  TCheckContext::ExpectEqual("the exposure after a refusal", before, Exposure(check));
}

void KeepsCycles(TCheckContext& check)
{
  if (!check.HasFeature(L"FrameRate")) TCheckContext::Skip("the camera has no frame rate");
  const TRange rates = RangeOf(check, L"FrameRate");
  const double shortest = 1.0 / rates.high;
  for (const double factor : {2.0, 3.0, 10.0}) {
    const double wanted = shortest * factor;
    if (wanted * rates.low > 1.0) continue;
    TCheckContext::ExpectCode("SetKineticCycleTime(" + TCheckContext::Shown(wanted) + ")", RC_SUCCESS,
                              CHECK_CALL(check, SetKineticCycleTime, wanted));
    TCheckContext::ExpectWithin("the cycle time that was set", wanted, kRelative * wanted, Kinetic(check));
  }
  TCheckContext::ExpectCode("a cycle time below the shortest", RC_SUCCESS,
                            CHECK_CALL(check, SetKineticCycleTime, shortest / 10));
  TCheckContext::ExpectWithin("the cycle time then", shortest, kRelative * shortest, Kinetic(check));
}

void RefusesUnknownSettings(TCheckContext& check)
{
  const auto trigger = check.Word(L"TriggerMode");
  const auto layout = check.Word(L"AOILayout");
  const auto expectRefused = [](const char* what, unsigned int code) {
    TCheckContext::ExpectCode(what, RC_P1_INVALID, code);
  };
  expectRefused("SetAcquisitionMode of no mode", CHECK_CALL(check, SetAcquisitionMode, 0));
  expectRefused("SetReadMode of no mode", CHECK_CALL(check, SetReadMode, 0));
  expectRefused("SetTriggerMode of no mode", CHECK_CALL(check, SetTriggerMode, kNoMode));
  expectRefused("SetADChannel of no channel", CHECK_CALL(check, SetADChannel, 2));
  expectRefused("SetOutputAmplifier of no amplifier", CHECK_CALL(check, SetOutputAmplifier, 2));
  if (CHECK_CALL(check, SetAcquisitionMode, 3) == RC_SUCCESS) {
    const unsigned int code = CHECK_CALL(check, SetNumberKinetics, 0);
    if (code != RC_NOT_SUPPORTED) expectRefused("a series of 0 images", code);
  }
  TCheckContext::ExpectEqual("the trigger mode after refusals", trigger.value_or(""),
                             check.Word(L"TriggerMode").value_or(""));
  TCheckContext::ExpectEqual("the layout after refusals", layout.value_or(""),
                             check.Word(L"AOILayout").value_or(""));
}

void HasTriggerModes(TCheckContext& check)
{
  constexpr struct
  {
    unsigned int bit;
    int mode;
  } kModes[] = {{VXMCD_TRIGGER_INTERNAL, 0},
                {VXMCD_TRIGGER_EXTERNAL, 1},
                {VXMCD_TRIGGER_EXTERNAL_START, 6},
                {VXMCD_TRIGGER_EXTERNAL_EXPOSURE, 7},
                {VXMCD_TRIGGER_SOFTWARE, 10}};
  vxmcd_Capabilities can = {};
  can.size = sizeof can;
  check.Need("GetCapabilities", CHECK_CALL(check, GetCapabilities, &can));
  if (!check.HasFeature(L"TriggerMode")) TCheckContext::Skip("the camera has no triggers");
  std::set<std::string> words;
  for (const auto& [bit, mode] : kModes) {
    const bool isOffered = (can.triggerModes & bit) != 0;
    TCheckContext::ExpectCode("trigger mode " + std::to_string(mode) +
                                  (isOffered ? " of the capabilities" : ", which the capabilities do not have"),
                              isOffered ? RC_SUCCESS : RC_INVALID_TRIGGER_MODE,
                              CHECK_CALL(check, SetTriggerMode, mode));
    if (!isOffered) continue;
    const auto word = check.Word(L"TriggerMode");
    check.Need("the trigger mode cannot be read", word.has_value());
    TCheckContext::Expect(words.insert(*word).second,
                          "the camera's mode after SetTriggerMode(" + std::to_string(mode) + ")",
                          "another one than before", "still \"" + *word + "\"");
  }
}

void KeepsAreaInRun(TCheckContext& check)
{
  const TImageSize size = ImageSize(check);
  StartRun(check, RunKind::UntilAborted);
  SetPart(check, 1, 1, {size.width / 2, size.height / 2});
  TCheckContext::ExpectEqual("the image area after SetImage during a run", size.Text(), ImageSize(check).Text());
  int isWritable = -1;
  CHECK_CALL(check, VX_IsWritable, check.FeatureHandle(), L"AOIWidth", &isWritable);
  TCheckContext::ExpectEqual("whether AOIWidth can be written during a run", 0, isWritable);
}

void SwitchesBaseline(TCheckContext& check)
{
  int state = -1;
  if (CHECK_CALL(check, GetBaselineClamp, &state) == RC_NOT_SUPPORTED)
    TCheckContext::Skip("the camera has no baseline clamp");
  for (const int wanted : {0, 1}) {
    const unsigned int code = CHECK_CALL(check, SetBaselineClamp, wanted);
    if (code == RC_NOT_AVAILABLE) TCheckContext::Skip("the baseline clamp cannot be switched");
    TCheckContext::ExpectCode("SetBaselineClamp(" + std::to_string(wanted) + ")", RC_SUCCESS, code);
    check.Need("GetBaselineClamp", CHECK_CALL(check, GetBaselineClamp, &state));
    TCheckContext::ExpectEqual("the baseline clamp that was set", wanted, state);
  }
  TCheckContext::ExpectCode("a baseline clamp that is neither on nor off", RC_P1_INVALID,
                            CHECK_CALL(check, SetBaselineClamp, 2));
}

void OverlapsWithoutLoss(TCheckContext& check)
{
  const unsigned int before = CHECK_CALL(check, SetOverlapMode, 0);
  if (before == RC_NOT_SUPPORTED) TCheckContext::Skip("the camera cannot overlap exposure and read-out");
  if (before == RC_NOT_AVAILABLE) TCheckContext::Skip("overlap cannot be switched under these settings");
  CHECK_CALL(check, SetKineticCycleTime, 1e-6);
  const double without = Kinetic(check);
  check.Need("SetOverlapMode", CHECK_CALL(check, SetOverlapMode, 1));
  CHECK_CALL(check, SetKineticCycleTime, 1e-6);
  const double with = Kinetic(check);
  CHECK_CALL(check, SetOverlapMode, 0);
  TCheckContext::Expect(with <= without * (1.0 + kSingle), "the shortest cycle with overlap",
                        "at most " + TCheckContext::Shown(without) + " s, as without",
                        TCheckContext::Shown(with) + " s");
}

} // namespace vxtool
