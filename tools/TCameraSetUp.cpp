// SPDX-License-Identifier: MIT
// Settings in the order in which one may change what another can be: cooling, readout, area, counts, times.
#include "tools/TCameraSetUp.h"

#include "tools/ArgumentForms.h"
#include "tools/CameraDescription.h"
#include "tools/DescriptionReport.h"
#include "tools/Messages.h"
#include "tools/TFeatureDevice.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdio>
#include <cstdlib>

namespace vxtool {

namespace {

constexpr double kNoticeable = 0.01; // a setting that is off by more than this part is worth a note

constexpr const char* kEncoding = "PixelEncoding";
constexpr const char* kEightBits = "Mono8";

unsigned int WriteArea(const TSensorArea& area)
{
  return SetImage(area.horizontalBinning, area.verticalBinning, area.left, area.left + area.width - 1, area.top,
                  area.top + area.height - 1);
}

// Rounded to single precision, the maximum may be above the camera's, which refuses it.
float ExposureArgument(double seconds)
{
  const auto rounded = static_cast<float>(seconds);
  float maximum = 0.0F;
  const bool isMaximum = GetMaximumExposure(&maximum) == RC_SUCCESS && rounded == maximum;
  return isMaximum ? std::nextafter(rounded, 0.0F) : rounded;
}

// The feature library's handle of the open camera.
int CoreHandle()
{
  int handle = VX_HANDLE_NONE;
  GetSDK3Handle(&handle);
  return handle;
}

std::string NumberText(double number)
{
  char text[32];
  std::snprintf(text, sizeof text, "%g", number);
  return text;
}

// The options that an area is given by, and the area: what is not given reaches to the edge.
std::string AreaOptionText(const TImageAreaOptions& given, const TSensorArea& area)
{
  const bool isWhole = given.left && given.top && given.width && given.height;
  const std::string text = isWhole ? "--area" : "--left, --top, --width, --height";
  if (area.width < 1 || area.height < 1)
    return text + ": the area begins at " + std::to_string(area.left) + "," + std::to_string(area.top);
  return text + ": the area is " + std::to_string(area.left) + "," + std::to_string(area.top) + "," +
         SizeText(area.width, area.height);
}

} // namespace

bool TCameraSetUp::Fail(const std::string& message)
{
  error_ = message;
  return false;
}

bool TCameraSetUp::Check(const char* option, const char* function, unsigned int code)
{
  if (code == RC_SUCCESS) return true;
  const std::string name = option;
  return Fail((name.empty() ? "" : name + ": ") + ResultText(function, code));
}

bool TCameraSetUp::CheckValue(const char* option, const std::string& value, const char* function,
                              unsigned int code)
{
  if (code != RC_P1_INVALID) return Check(option, function, code);
  return Fail(std::string(option) + ": " + RefusedText(value, ResultText(function, code)));
}

bool TCameraSetUp::Apply(const TAcquireOptions& options)
{
  return SetCooling(options.cooling) && SetReadout(options.readout) && SetEncoding(options.encoding) &&
         SetArea(options.area) && SetTracks(options.area) && SetTrigger(options.trigger) && SetCounts(options) &&
         Check("--mode", "SetAcquisitionMode",
               SetAcquisitionMode(static_cast<int>(options.mode.value_or(RunMode::Single)))) &&
         SetOverlap(options.isOverlapped) && SetTimes(options) && SetFeatures(options.features) &&
         ReadTimes(options) && CheckBits(options) && SetSpooling(options.spool);
}

bool TCameraSetUp::SetCooling(const TCoolingOptions& cooling)
{
  if (cooling.fan && !Check("--fan", "SetFanMode", SetFanMode(static_cast<int>(*cooling.fan)))) return false;
  if (!cooling.targetCelsius) return true;
  int lowest = 0;
  int highest = 0;
  if (!Check("--temperature", "GetTemperatureRange", GetTemperatureRange(&lowest, &highest))) return false;
  if (*cooling.targetCelsius < lowest || *cooling.targetCelsius > highest)
    return Fail("--temperature: " +
                RefusedText(std::to_string(*cooling.targetCelsius), "this camera takes " + std::to_string(lowest) +
                                                                        " to " + std::to_string(highest) + " C"));
  firstTargetCelsius_ = *cooling.targetCelsius;
  if (cooling.rampPerMinute) {
    const TAnswer<TTemperature> sensor = AskTemperature();
    if (!sensor.value) return Check("--ramp", sensor.function, sensor.code);
    firstTargetCelsius_ = std::clamp(static_cast<int>(std::lround(sensor.value->celsius)), lowest, highest);
  }
  if (!Check("--temperature", "SetTemperature", SetTemperature(firstTargetCelsius_)) ||
      !Check("--temperature", "CoolerON", CoolerON()))
    return false;
  int isOn = 0; // CoolerON() succeeds even if the camera refuses
  if (!Check("--temperature", "IsCoolerOn", IsCoolerOn(&isOn))) return false;
  hasSwitchedCoolerOn_ = isOn == 1;
  return hasSwitchedCoolerOn_ || Fail("--temperature: the cooler does not switch on");
}

bool TCameraSetUp::SetReadout(TReadoutOptions readout)
{
  if (!CheckIndices(readout) || (readout.gain && !ChooseChannelForGain(readout))) return false;
  // A single amplifier is in use in channel 0 only: in the other one the choice would have no effect.
  if (readout.amplifier && !readout.channel) readout.channel = 0;
  if (readout.amplifier && !Check("--amplifier", "SetOutputAmplifier", SetOutputAmplifier(*readout.amplifier)))
    return false;
  if (readout.channel && !Check("--channel", "SetADChannel", SetADChannel(*readout.channel))) return false;
  if (readout.speed) {
    const int amplifier = readout.amplifier.value_or(0);
    float megahertz = 0.0F;
    if (!Check("--speed", "GetHSSpeed",
               GetHSSpeed(readout.channel.value_or(0), amplifier, *readout.speed, &megahertz)) ||
        !Check("--speed", "SetHSSpeed", SetHSSpeed(amplifier, *readout.speed)))
      return false;
    readout_.megahertz = megahertz;
  }
  if (readout.gain) {
    if (!Check("--gain", "SetPreAmpGain", SetPreAmpGain(*readout.gain))) return false;
    readout_.gain = AskGainText(*readout.gain).value.value_or("");
    readout_.gainFactor = AskGainFactor(*readout.gain).value;
  }
  if (readout.channel || readout.amplifier)
    readout_.amplifier = AskAmplifier(readout.amplifier.value_or(0)).value.value_or("");
  return !readout.isBaselineClamped ||
         Check("--baseline-clamp", "SetBaselineClamp", SetBaselineClamp(*readout.isBaselineClamped ? 1 : 0));
}

// What the camera does not count is left to the functions that take the numbers.
bool TCameraSetUp::CheckIndices(const TReadoutOptions& readout)
{
  int channels = 0;
  int amplifiers = 0;
  int speeds = 0;
  int gains = 0;
  if (readout.channel) GetNumberADChannels(&channels);
  if (readout.amplifier) GetNumberAmp(&amplifiers);
  if (readout.gain) GetNumberPreAmpGains(&gains);
  const auto check = [this](const char* option, const std::optional<int>& given, int count, std::string what) {
    if (!given || count < 1 || *given < count) return true;
    what += count == 1 ? ", 0" : "s, 0 to " + std::to_string(count - 1);
    const std::string has = "this camera has " + std::to_string(count) + " " + what + "; vxmcd info lists them";
    return Fail(std::string(option) + ": " + RefusedText(std::to_string(*given), has));
  };
  if (!check("--channel", readout.channel, channels, "channel") ||
      !check("--amplifier", readout.amplifier, amplifiers, "amplifier") ||
      !check("--gain", readout.gain, gains, "gain"))
    return false;
  if (readout.speed) GetNumberHSSpeeds(readout.channel.value_or(0), readout.amplifier.value_or(0), &speeds);
  return check("--speed", readout.speed, speeds, "speed");
}

bool TCameraSetUp::SetOneFeature(const std::string& option, const TFeatureSetting& setting,
                                 TCameraFeature& feature)
{
  const std::string problem = vxtool::SetFeature(CoreHandle(), setting, feature);
  return problem.empty() || Fail(option + ": " + problem);
}

bool TCameraSetUp::SetEncoding(const std::string& encoding)
{
  TCameraFeature feature;
  if (!encoding.empty() && !SetOneFeature("--encoding", {kEncoding, encoding}, feature)) return false;
  encoding_ = FeatureText(CoreHandle(), kEncoding).value_or("");
  return true;
}

bool TCameraSetUp::SetFeatures(const std::vector<TFeatureSetting>& settings)
{
  for (const TFeatureSetting& setting : settings) {
    TCameraFeature feature;
    if (!SetOneFeature("--set: " + setting.name, setting, feature)) return false;
    features_.push_back({setting.name, FeatureValueText(feature.value)});
    const double asked = std::strtod(setting.value.c_str(), nullptr);
    const auto* const got = std::get_if<double>(&feature.value);
    if (got && std::fabs(*got - asked) > kNoticeable * std::fabs(asked))
      notes_ +=
          setting.name + " is " + FeatureValueText(feature.value) + ": the camera's nearest to what was asked\n";
  }
  return true;
}

// Images can be fetched with 8 bits from cameras that deliver 8 bits, and after a sum, which is clipped.
bool TCameraSetUp::CheckBits(const TAcquireOptions& options)
{
  TCameraFeature encoding;
  if (!ReadFeature(CoreHandle(), kEncoding, encoding)) return true;
  const std::string present = FeatureValueText(encoding.value);
  if (!options.encoding.empty() && present != options.encoding)
    notes_ += "the encoding is " + present + ": sums of exposures need it\n";
  if (options.depth != PixelDepth::Bits8 || options.accumulations > 1 || present == kEightBits) return true;
  for (const TFeatureWord& word : encoding.words)
    if (word.text == kEightBits)
      return Fail("--bits: " + RefusedText("8", "the camera is set to " + present + ", and --encoding " +
                                                    kEightBits + " sets it to 8 bits"));
  return Fail("--bits: " + RefusedText("8", "16 or 32 is, since this camera has no encoding of 8 bits"));
}

bool TCameraSetUp::ChooseChannelForGain(TReadoutOptions& readout)
{
  int channels = 0;
  int amplifiers = 0;
  if (!Check("--gain", "GetNumberADChannels", GetNumberADChannels(&channels)) ||
      !Check("--gain", "GetNumberAmp", GetNumberAmp(&amplifiers)))
    return false;
  const int lastChannel = readout.channel.value_or(channels - 1);
  const int lastAmplifier = readout.amplifier.value_or(amplifiers - 1);
  for (int channel = readout.channel.value_or(0); channel <= lastChannel; ++channel) {
    for (int amplifier = readout.amplifier.value_or(0); amplifier <= lastAmplifier; ++amplifier) {
      int isAvailable = 0;
      const unsigned int code =
          IsPreAmpGainAvailable(channel, amplifier, readout.speed.value_or(0), *readout.gain, &isAvailable);
      if (!Check("--gain", "IsPreAmpGainAvailable", code)) return false;
      if (isAvailable == 0) continue;
      readout.channel = channel;
      readout.amplifier = amplifier;
      return true;
    }
  }
  return Fail("--gain: " + RefusedText(std::to_string(*readout.gain),
                                       "it cannot be had with this channel, amplifier and speed; vxmcd info lists "
                                       "what goes together"));
}

bool TCameraSetUp::SetArea(const TImageAreaOptions& area)
{
  int sensorWidth = 0;
  int sensorHeight = 0;
  if (!Check("--area", "GetDetector", GetDetector(&sensorWidth, &sensorHeight))) return false;
  area_.left = area.left.value_or(1);
  area_.top = area.top.value_or(1);
  area_.width = area.width.value_or(sensorWidth + 1 - area_.left);
  area_.height = area.height.value_or(sensorHeight + 1 - area_.top);
  area_.horizontalBinning = area.horizontalBinning;
  area_.verticalBinning = area.verticalBinning;
  if (area_.width < 1 || area_.height < 1 || area_.left + area_.width - 1 > sensorWidth ||
      area_.top + area_.height - 1 > sensorHeight)
    return Fail(AreaOptionText(area, area_) + ", which does not fit on the sensor of " +
                SizeText(sensorWidth, sensorHeight) + " pixels");
  if (ImageWidth() < 1 || ImageHeight() < 1)
    return Fail("--binning: " +
                RefusedText(SizeText(area_.horizontalBinning, area_.verticalBinning),
                            "it is larger than the area of " + SizeText(area_.width, area_.height) + " pixels"));
  if (!area.tracks.empty()) return true;
  if (!Check("", "SetReadMode", SetReadMode(static_cast<int>(ReadMode::Image)))) return false;
  const TSensorArea wanted = area_;
  if (wanted.horizontalBinning > 1 || wanted.verticalBinning > 1) {
    area_.left = area_.top = 1;
    area_.width = sensorWidth;
    area_.height = sensorHeight;
    if (!IsBinningInForce())
      return Fail("--binning: " +
                  RefusedText(SizeText(area_.horizontalBinning, area_.verticalBinning), BinningsText()));
    area_ = wanted;
  }
  return Check("--area", "SetImage", WriteArea(area_));
}

std::string TCameraSetUp::BinningsText() const
{
  TCameraFeature binnings;
  std::vector<std::string> words;
  if (ReadFeature(CoreHandle(), "AOIBinning", binnings))
    for (const TFeatureWord& word : binnings.words) words.push_back(word.text);
  if (!words.empty()) return "this camera bins by " + ChoiceText(words);
  int horizontal = 1;
  int vertical = 1;
  GetMaximumBinning(static_cast<int>(ReadMode::Image), 0, &horizontal);
  GetMaximumBinning(static_cast<int>(ReadMode::Image), 1, &vertical);
  return "this camera bins by at most " + SizeText(horizontal, vertical);
}

bool TCameraSetUp::SetTrigger(Trigger trigger)
{
  const unsigned int code = SetTriggerMode(static_cast<int>(trigger));
  vxmcd_Capabilities capabilities = {};
  capabilities.size = sizeof capabilities;
  if (code == RC_INVALID_TRIGGER_MODE && GetCapabilities(&capabilities) == RC_SUCCESS)
    return Fail("--trigger: " +
                RefusedText(TriggerName(trigger), "this camera takes " + ChoiceText(TriggerWords(capabilities))));
  return CheckValue("--trigger", TriggerName(trigger), "SetTriggerMode", code);
}

// SetImage() does not report a binning that the camera does not have, and no function reports the binning in force.
// So it is tried: with a binning of b the whole sensor fits, and one binned pixel more does not.
bool TCameraSetUp::IsBinningInForce() const
{
  TSensorArea wider = area_;
  TSensorArea higher = area_;
  wider.width += wider.horizontalBinning;
  higher.height += higher.verticalBinning;
  return WriteArea(wider) == RC_P4_INVALID && WriteArea(higher) == RC_P5_INVALID && WriteArea(area_) == RC_SUCCESS;
}

bool TCameraSetUp::SetTracks(const TImageAreaOptions& area)
{
  if (area.tracks.empty()) return true;
  area_.tracks = area.tracks;
  std::vector<int> rows;
  for (const TTrack& track : area.tracks) {
    if (track.last > area_.height)
      return Fail("--tracks: " + RefusedText(std::to_string(track.first) + "-" + std::to_string(track.last),
                                             "the sensor has " + std::to_string(area_.height) + " rows"));
    rows.push_back(track.first);
    rows.push_back(track.last);
  }
  return Check("--tracks", "SetRandomTracks",
               SetRandomTracks(static_cast<int>(area.tracks.size()), rows.data())) &&
         Check("--tracks", "SetReadMode", SetReadMode(static_cast<int>(ReadMode::Tracks)));
}

int TCameraSetUp::ImageWidth() const
{
  return area_.width / area_.horizontalBinning;
}

int TCameraSetUp::ImageHeight() const
{
  return area_.tracks.empty() ? area_.height / area_.verticalBinning : static_cast<int>(area_.tracks.size());
}

bool TCameraSetUp::SetCounts(const TAcquireOptions& options)
{
  const unsigned int code = SetNumberAccumulations(options.accumulations);
  const bool isPlain = options.accumulations == 1 && code == RC_NOT_SUPPORTED;
  if (!isPlain &&
      !CheckValue("--accumulations", std::to_string(options.accumulations), "SetNumberAccumulations", code))
    return false;
  if (options.mode != RunMode::Series) return true;
  const long frames = options.frames.value_or(1);
  const unsigned int set =
      frames > INT_MAX ? static_cast<unsigned int>(RC_P1_INVALID) : SetNumberKinetics(static_cast<int>(frames));
  return CheckValue("--frames", std::to_string(frames), "SetNumberKinetics", set);
}

bool TCameraSetUp::SetExposure(double seconds)
{
  const unsigned int code = SetExposureTime(ExposureArgument(seconds));
  float maximum = 0.0F;
  const std::string value = NumberText(seconds);
  if (code == RC_P1_INVALID && GetMaximumExposure(&maximum) == RC_SUCCESS &&
      seconds > static_cast<double>(maximum))
    return Fail("--exposure: " + RefusedText(value, "this camera exposes at most " +
                                                        NumberText(static_cast<double>(maximum)) + " s"));
  return CheckValue("--exposure", value, "SetExposureTime", code);
}

bool TCameraSetUp::SetTimes(const TAcquireOptions& options)
{
  if (options.exposureSeconds && !SetExposure(*options.exposureSeconds)) return false;
  const bool isBurst = options.mode == RunMode::Accumulate;
  // Between images the program itself keeps to the cycle of its triggers: the camera then has no rate to set.
  const bool isCyclePrograms = !isBurst && options.trigger == Trigger::Software;
  return (isCyclePrograms || SetCycle("--cycle", options.cycleSeconds, isBurst)) &&
         SetCycle("--accumulation-cycle", options.accumulationCycleSeconds, true);
}

bool TCameraSetUp::SetCycle(const char* option, const std::optional<double>& asked, bool isBetweenSummed)
{
  if (!asked) return true;
  const auto seconds = static_cast<float>(*asked);
  if (isBetweenSummed) return Check(option, "SetAccumulationCycleTime", SetAccumulationCycleTime(seconds));
  return Check(option, "SetKineticCycleTime", SetKineticCycleTime(seconds));
}

bool TCameraSetUp::SetOverlap(const std::optional<bool>& isOverlapped)
{
  return !isOverlapped || Check("--overlap", "SetOverlapMode", SetOverlapMode(*isOverlapped ? 1 : 0));
}

bool TCameraSetUp::ReadTimes(const TAcquireOptions& options)
{
  const bool isBurst = options.mode == RunMode::Accumulate;
  float exposure = 0.0F;
  float accumulate = 0.0F;
  float kinetic = 0.0F;
  if (!Check("", "GetAcquisitionTimings", GetAcquisitionTimings(&exposure, &accumulate, &kinetic))) return false;
  exposureSeconds_ = exposure;
  cycleSeconds_ = isBurst ? accumulate : kinetic;
  const auto note = [this](const char* what, const std::optional<double>& asked, double got) {
    if (asked && std::fabs(got - *asked) > kNoticeable * *asked)
      notes_ += std::string(what) + " is " + std::to_string(got) + " s: the camera's nearest to what was asked\n";
  };
  note("the exposure", options.exposureSeconds, exposureSeconds_);
  if (options.trigger == Trigger::Internal) note("the cycle", options.cycleSeconds, cycleSeconds_);
  note("the accumulation cycle", options.accumulationCycleSeconds, accumulate);
  return true;
}

bool TCameraSetUp::SetSpooling(TSpoolOptions spool)
{
  if (spool.directory.empty()) return true;
  return (!spool.threads ||
          Check("--spool-threads", "SetSpoolThreadCount", SetSpoolThreadCount(*spool.threads))) &&
         Check("--spool", "SetSpool", SetSpool(1, static_cast<int>(spool.method), spool.directory.data()));
}

TSettingsInForce TCameraSetUp::InForce() const
{
  const int handle = CoreHandle();
  TSettingsInForce inForce;
  inForce.model = FeatureText(handle, "CameraModel").value_or("");
  inForce.serial = FeatureText(handle, "SerialNumber").value_or("");
  inForce.firmware = FeatureText(handle, "FirmwareVersion").value_or("");
  GetAcquisitionTimings(&inForce.exposureSeconds, &inForce.accumulateSeconds, &inForce.cycleSeconds);
  inForce.encoding = encoding_;
  int isClamped = 0;
  if (GetBaselineClamp(&isClamped) == RC_SUCCESS) inForce.isBaselineClamped = isClamped == 1;
  inForce.area = area_;
  inForce.features = features_;
  return inForce;
}

double TCameraSetUp::ReadoutSeconds() const
{
  float seconds = 0.0F;
  return GetReadOutTime(&seconds) == RC_SUCCESS ? static_cast<double>(seconds) : 0.0;
}

} // namespace vxtool
