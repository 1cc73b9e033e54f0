// SPDX-License-Identifier: MIT
// The questions, and which codes are answers.
#include "tools/CameraDescription.h"

#include "tools/CameraFeature.h"
#include "tools/Options.h"

#include <array>

namespace vxtool {

namespace {

constexpr std::size_t kModelBytes = 4096; // what GetHeadModel() asks for

template <typename Value>
TAnswer<Value> Answer(const char* function, unsigned int code, const Value& value)
{
  TAnswer<Value> answer{function, code, std::nullopt};
  if (code == RC_SUCCESS) answer.value = value;
  return answer;
}

// A value that stays at @p unset was not written by the function.
template <typename Value, typename Number>
TAnswer<Value> AnswerUnless(Number unset, const char* function, unsigned int code, Number value)
{
  TAnswer<Value> answer{function, code, std::nullopt};
  if (code == RC_SUCCESS && value != unset) answer.value = static_cast<Value>(value);
  return answer;
}

TAnswer<std::string> AskLibraryVersion()
{
  char text[64] = "";
  const unsigned int code = GetVersionInfo(VXMCD_VERSION_LIBRARY, text, sizeof text - 1);
  return Answer("GetVersionInfo", code, std::string(text));
}

TAnswer<TFirmware> AskFirmware()
{
  unsigned int unused[4] = {};
  TFirmware firmware;
  const unsigned int code =
      GetHardwareVersion(&unused[0], &unused[1], &unused[2], &unused[3], &firmware.date, &firmware.build);
  TAnswer<TFirmware> answer = Answer("GetHardwareVersion", code, firmware);
  if (firmware.date == 0 && firmware.build == 0) answer.value.reset();
  return answer;
}

TAnswer<TPair<int>> AskSensorSize()
{
  TPair<int> size;
  const unsigned int code = GetDetector(&size.first, &size.second);
  return Answer("GetDetector", code, size);
}

TAnswer<vxmcd_Capabilities> AskCapabilities()
{
  vxmcd_Capabilities words = {};
  words.size = sizeof words;
  const unsigned int code = GetCapabilities(&words);
  return Answer("GetCapabilities", code, words);
}

TAnswer<int> AskMaximumBinning(int direction)
{
  int factor = 1;
  const unsigned int code = GetMaximumBinning(static_cast<int>(ReadMode::Image), direction, &factor);
  return Answer("GetMaximumBinning", code == 0 ? static_cast<unsigned int>(RC_SUCCESS) : code, factor);
}

TAnswer<int> AskBits(int channel)
{
  int bits = 0;
  const unsigned int code = GetBitDepth(channel, &bits);
  return AnswerUnless<int>(0, "GetBitDepth", code, bits);
}

TAmplifierAnswers AskAboutAmplifier(int amplifier)
{
  float megahertz = 0.0F;
  const unsigned int code = GetAmpMaxSpeed(amplifier, &megahertz);
  return {AskAmplifier(amplifier), AnswerUnless<float>(0.0F, "GetAmpMaxSpeed", code, megahertz)};
}

TAnswer<float> AskSpeed(int speed)
{
  float megahertz = 0.0F;
  const unsigned int code = GetHSSpeed(0, 0, speed, &megahertz);
  return Answer("GetHSSpeed", code, megahertz);
}

TAnswer<std::vector<TPair<int>>> AskWhatGainGoesWith(int gain, int channels, int amplifiers)
{
  std::vector<TPair<int>> usable;
  for (int channel = 0; channel < channels; ++channel) {
    for (int amplifier = 0; amplifier < amplifiers; ++amplifier) {
      int status = 0;
      const unsigned int code = IsPreAmpGainAvailable(channel, amplifier, 0, gain, &status);
      if (code != RC_SUCCESS) return {"IsPreAmpGainAvailable", code, std::nullopt};
      if (status == 1) usable.push_back({channel, amplifier});
    }
  }
  return Answer("IsPreAmpGainAvailable", RC_SUCCESS, usable);
}

TAnswer<bool> AskBaselineClamp()
{
  int state = 0;
  const unsigned int code = GetBaselineClamp(&state);
  return Answer("GetBaselineClamp", code, state == 1);
}

TAnswer<TPair<int>> AskTargetRange()
{
  TPair<int> range;
  const unsigned int code = GetTemperatureRange(&range.first, &range.second);
  return Answer("GetTemperatureRange", code, range);
}

// The function writes 0 for a target that the camera does not have: the range shows whether it has one.
TAnswer<float> AskTarget(unsigned int rangeCode)
{
  float sensor = 0.0F;
  float target = 0.0F;
  float unused[2] = {};
  const unsigned int code = GetTemperatureStatus(&sensor, &target, &unused[0], &unused[1]);
  return Answer("GetTemperatureStatus", code == RC_SUCCESS ? rangeCode : code, target);
}

TAnswer<bool> AskCooler()
{
  int state = -1;
  const unsigned int code = IsCoolerOn(&state);
  return AnswerUnless<bool>(-1, "IsCoolerOn", code, state);
}

TAnswer<int> AskMemoryUse()
{
  int percent = -1;
  const unsigned int code = GetFIFOUsage(&percent);
  return AnswerUnless<int>(-1, "GetFIFOUsage", code, percent);
}

TAnswer<TTimings> AskTimings()
{
  TTimings times;
  const unsigned int code =
      GetAcquisitionTimings(&times.exposureSeconds, &times.accumulateSeconds, &times.kineticSeconds);
  return Answer("GetAcquisitionTimings", code, times);
}

TAnswer<float> AskMaximumExposure()
{
  float seconds = 0.0F;
  const unsigned int code = GetMaximumExposure(&seconds);
  return Answer("GetMaximumExposure", code, seconds);
}

TAnswer<float> AskReadout()
{
  float seconds = 0.0F;
  const unsigned int code = GetReadOutTime(&seconds);
  return Answer("GetReadOutTime", code, seconds);
}

TAnswer<long> AskRing()
{
  long bytes = 0;
  const unsigned int code = GetSizeOfCircularBuffer(&bytes);
  return Answer("GetSizeOfCircularBuffer", code, bytes);
}

void DescribeReadout(TCameraDescription& description)
{
  int channels = 0;
  int amplifiers = 0;
  int speeds = 0;
  int gains = 0;
  GetNumberADChannels(&channels);
  GetNumberAmp(&amplifiers);
  GetNumberHSSpeeds(0, 0, &speeds);
  GetNumberPreAmpGains(&gains);
  for (int index = 0; index < channels; ++index) description.channelBits.push_back(AskBits(index));
  for (int index = 0; index < amplifiers; ++index) description.amplifiers.push_back(AskAboutAmplifier(index));
  for (int index = 0; index < speeds; ++index) description.speedsMegahertz.push_back(AskSpeed(index));
  for (int index = 0; index < gains; ++index)
    description.gains.push_back(
        {AskGainText(index), AskGainFactor(index), AskWhatGainGoesWith(index, channels, amplifiers)});
}

} // namespace

TAnswer<std::string> AskModel()
{
  std::array<char, kModelBytes> text = {};
  const unsigned int code = GetHeadModel(text.data());
  TAnswer<std::string> answer = Answer("GetHeadModel", code, std::string(text.data()));
  if (text[0] == '\0') answer.value.reset();
  return answer;
}

TAnswer<int> AskSerial()
{
  int number = 0;
  const unsigned int code = GetCameraSerialNumber(&number);
  return AnswerUnless<int>(0, "GetCameraSerialNumber", code, number);
}

TAnswer<TPair<float>> AskPixelSize()
{
  TPair<float> size;
  const unsigned int code = GetPixelSize(&size.first, &size.second);
  return Answer("GetPixelSize", code, size);
}

TAnswer<TTemperature> AskTemperature()
{
  TTemperature temperature;
  temperature.state = GetTemperatureF(&temperature.celsius);
  switch (temperature.state) {
  case RC_SUCCESS:
  case RC_TEMP_OFF:
  case RC_TEMP_STABILIZED:
  case RC_TEMP_NOT_REACHED:
  case RC_TEMP_DRIFT:
  case RC_TEMP_NOT_STABILIZED:
    return {"GetTemperatureF", RC_SUCCESS, temperature};
  default:
    return {"GetTemperatureF", temperature.state, std::nullopt};
  }
}

TAnswer<std::string> AskAmplifier(int amplifier)
{
  char text[32] = "";
  const unsigned int code = GetAmpDesc(amplifier, text, sizeof text - 1);
  return Answer("GetAmpDesc", code, std::string(text));
}

TAnswer<std::string> AskGainText(int gain)
{
  char text[64] = "";
  const unsigned int code = GetPreAmpGainText(gain, text, sizeof text);
  return Answer("GetPreAmpGainText", code, std::string(text));
}

TAnswer<float> AskGainFactor(int gain)
{
  float factor = 0.0F;
  const unsigned int code = GetPreAmpGain(gain, &factor);
  return AnswerUnless<float>(0.0F, "GetPreAmpGain", code, factor);
}

TCameraDescription DescribeOpenCamera(int number)
{
  TCameraDescription description;
  description.number = number;
  long handle = 0;
  const unsigned int code = GetCurrentCamera(&handle);
  description.handle = Answer("GetCurrentCamera", code, handle);
  description.libraryVersion = AskLibraryVersion();
  description.model = AskModel();
  description.serial = AskSerial();
  description.firmware = AskFirmware();
  if (int core = -1; GetSDK3Handle(&core) == RC_SUCCESS) description.source = FeatureText(core, "DeviceSource");
  description.sensorPixels = AskSensorSize();
  description.pixelMicrometres = AskPixelSize();
  description.capabilities = AskCapabilities();
  description.maximumHorizontalBinning = AskMaximumBinning(0);
  description.maximumVerticalBinning = AskMaximumBinning(1);
  DescribeReadout(description);
  description.isBaselineClamped = AskBaselineClamp();
  description.temperature = AskTemperature();
  description.targetRange = AskTargetRange();
  description.targetCelsius = AskTarget(description.targetRange.code);
  description.isCoolerOn = AskCooler();
  description.memoryUsedPercent = AskMemoryUse();
  description.timings = AskTimings();
  description.maximumExposureSeconds = AskMaximumExposure();
  description.readoutSeconds = AskReadout();
  description.ringBytes = AskRing();
  return description;
}

} // namespace vxtool
