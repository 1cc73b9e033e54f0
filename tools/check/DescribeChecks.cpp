// SPDX-License-Identifier: MIT
// What the camera says of itself.
#include "tools/check/CameraRuns.h"
#include "tools/check/Checks.h"

#include <cmath>

namespace vxtool {

namespace {

constexpr int kNameLength = 4096;
constexpr int kTextLength = 64;

// Everything that does not change, as one text.
std::string Identity(TCheckContext& check)
{
  char model[kNameLength] = "";
  int serial = 0;
  unsigned int zero = 0;
  unsigned int date = 0;
  unsigned int build = 0;
  float width = 0.0F;
  float height = 0.0F;
  TCheckContext::ExpectCode("GetHeadModel", RC_SUCCESS, CHECK_CALL(check, GetHeadModel, model));
  TCheckContext::ExpectCode("GetCameraSerialNumber", RC_SUCCESS,
                            CHECK_CALL(check, GetCameraSerialNumber, &serial));
  TCheckContext::ExpectCode("GetHardwareVersion", RC_SUCCESS,
                            CHECK_CALL(check, GetHardwareVersion, &zero, &zero, &zero, &zero, &date, &build));
  CHECK_CALL(check, GetPixelSize, &width, &height);
  TCheckContext::Expect(*model != '\0', "the model", "a text", "\"\"");
  TCheckContext::Expect(width > 0.0F && height > 0.0F, "the size of a pixel", "above 0",
                        TCheckContext::Shown(width) + " x " + TCheckContext::Shown(height) + " um");
  return std::string(model) + ", serial number " + std::to_string(serial) + ", firmware " + std::to_string(date) +
         "." + std::to_string(build) + ", " + Sensor(check).Text() + " pixels of " + TCheckContext::Shown(width) +
         " x " + TCheckContext::Shown(height) + " um";
}

void ExpectAgreement(const char* function, bool isCapable, unsigned int code)
{
  const bool isSupported = code != RC_NOT_SUPPORTED;
  TCheckContext::Expect(isCapable == isSupported, std::string(function) + ", as the capabilities say",
                        isCapable ? "supported" : "not supported", TCheckContext::CodeText(code));
}

void ExpectTime(const char* what, double seconds)
{
  TCheckContext::Expect(std::isfinite(seconds) && seconds > 0.0, what, "a number above 0",
                        TCheckContext::Shown(seconds) + " s");
}

} // namespace

void KeepsIdentity(TCheckContext& check)
{
  const std::string before = Identity(check);
  check.Need("ShutDown", CHECK_CALL(check, ShutDown));
  check.Need("Initialize", CHECK_CALL(check, Initialize, nullptr));
  TCheckContext::ExpectEqual("what the camera is after an opening", before, Identity(check));
}

void HasCapabilities(TCheckContext& check)
{
  vxmcd_Capabilities can = {};
  can.size = sizeof can;
  TCheckContext::ExpectCode("GetCapabilities", RC_SUCCESS, CHECK_CALL(check, GetCapabilities, &can));
  int number = 0;
  float celsius = 0.0F;
  int tracks[] = {1, 1};
  ExpectAgreement("SetNumberKinetics", (can.acquisitionModes & VXMCD_ACQUISITION_SERIES) != 0,
                  CHECK_CALL(check, SetNumberKinetics, 2));
  ExpectAgreement("SetOverlapMode", (can.acquisitionModes & VXMCD_ACQUISITION_OVERLAP) != 0,
                  CHECK_CALL(check, SetOverlapMode, 0));
  ExpectAgreement("SetRandomTracks", (can.readModes & VXMCD_READ_TRACKS) != 0,
                  CHECK_CALL(check, SetRandomTracks, 1, tracks));
  ExpectAgreement("GetBaselineClamp", (can.settableFunctions & VXMCD_SET_BASELINE_CLAMP) != 0,
                  CHECK_CALL(check, GetBaselineClamp, &number));
  ExpectAgreement("SetMetaData", (can.features & VXMCD_FEATURE_METADATA) != 0, CHECK_CALL(check, SetMetaData, 1));
  ExpectAgreement("GetTemperatureF", (can.readableFunctions & VXMCD_GET_TEMPERATURE) != 0,
                  CHECK_CALL(check, GetTemperatureF, &celsius));
}

void HasConsistentGains(TCheckContext& check)
{
  constexpr int kAmplifiers = 2;
  int channels = 0;
  int gains = 0;
  CHECK_CALL(check, GetNumberADChannels, &channels);
  CHECK_CALL(check, GetNumberPreAmpGains, &gains);
  TCheckContext::Expect(channels == 1 || channels == 2, "AD channels", "1 or 2", std::to_string(channels));
  int usable = 0;
  for (int channel = 0; channel < channels; ++channel) {
    int bits = 0;
    TCheckContext::ExpectCode("GetBitDepth", RC_SUCCESS, CHECK_CALL(check, GetBitDepth, channel, &bits));
    TCheckContext::Expect(bits > 0 && bits <= 32, "bits of a pixel", "1 to 32", std::to_string(bits));
    for (int amplifier = 0; amplifier < kAmplifiers; ++amplifier) {
      int speeds = 0;
      TCheckContext::ExpectCode("GetNumberHSSpeeds", RC_SUCCESS,
                                CHECK_CALL(check, GetNumberHSSpeeds, channel, amplifier, &speeds));
      for (int speed = 0; speed < speeds; ++speed) {
        float megahertz = 0.0F;
        TCheckContext::ExpectCode("GetHSSpeed", RC_SUCCESS,
                                  CHECK_CALL(check, GetHSSpeed, channel, amplifier, speed, &megahertz));
        TCheckContext::Expect(megahertz > 0.0F, "a speed", "above 0", TCheckContext::Shown(megahertz) + " MHz");
        for (int gain = 0; gain < gains; ++gain) {
          int status = -1;
          TCheckContext::ExpectCode(
              "IsPreAmpGainAvailable", RC_SUCCESS,
              CHECK_CALL(check, IsPreAmpGainAvailable, channel, amplifier, speed, gain, &status));
          TCheckContext::Expect(status == 0 || status == 1, "whether a gain is available", "0 or 1",
                                std::to_string(status));
          usable += status;
        }
      }
    }
  }
  if (gains == 0) TCheckContext::Skip("the camera has no gains to choose from");
  TCheckContext::Expect(usable > 0, "gains that can be used", "one at least", "none");
  for (int gain = 0; gain < gains; ++gain) {
    char text[kTextLength] = "";
    float factor = 0.0F;
    TCheckContext::ExpectCode("GetPreAmpGainText", RC_SUCCESS,
                              CHECK_CALL(check, GetPreAmpGainText, gain, text, kTextLength));
    TCheckContext::ExpectCode("GetPreAmpGain", RC_SUCCESS, CHECK_CALL(check, GetPreAmpGain, gain, &factor));
    TCheckContext::Expect(*text != '\0' && factor > 0.0F, "name and factor of a gain", "a text, and above 0",
                          TCheckContext::Shown(text) + ", " + TCheckContext::Shown(factor));
  }
}

void HasTimings(TCheckContext& check)
{
  float exposure = 0.0F;
  float accumulate = 0.0F;
  float kinetic = 0.0F;
  float longest = 0.0F;
  float readout = 0.0F;
  TCheckContext::ExpectCode("GetAcquisitionTimings", RC_SUCCESS,
                            CHECK_CALL(check, GetAcquisitionTimings, &exposure, &accumulate, &kinetic));
  ExpectTime("the exposure", static_cast<double>(exposure));
  ExpectTime("the accumulation cycle", static_cast<double>(accumulate));
  ExpectTime("the kinetic cycle", static_cast<double>(kinetic));
  TCheckContext::ExpectCode("GetMaximumExposure", RC_SUCCESS, CHECK_CALL(check, GetMaximumExposure, &longest));
  TCheckContext::Expect(longest >= exposure, "the longest exposure",
                        "at least the present one, " + TCheckContext::Shown(exposure) + " s",
                        TCheckContext::Shown(longest) + " s");
  if (CHECK_CALL(check, GetReadOutTime, &readout) == RC_SUCCESS)
    ExpectTime("the read-out time", static_cast<double>(readout));
}

void HasVersions(TCheckContext& check)
{
  unsigned int major = 0;
  unsigned int minor = 0;
  unsigned int build = 0;
  unsigned int revision = 0;
  char text[kTextLength] = "";
  TCheckContext::ExpectCode("getSDKVersion", RC_SUCCESS,
                            CHECK_CALL(check, getSDKVersion, &major, &minor, &build, &revision));
  TCheckContext::ExpectCode("GetVersionInfo", RC_SUCCESS,
                            CHECK_CALL(check, GetVersionInfo, VXMCD_VERSION_LIBRARY, text, kTextLength));
  TCheckContext::ExpectEqual("the version as a text",
                             std::to_string(major) + "." + std::to_string(minor) + "." + std::to_string(build) +
                                 "." + std::to_string(revision),
                             std::string(text));
}

} // namespace vxtool
