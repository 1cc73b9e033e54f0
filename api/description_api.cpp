// SPDX-License-Identifier: MIT
// What kind of camera is open.
#include "api/entry_points.h"
#include "api/TCameraUse.h"
#include "api/traced_functions.h"
#include "api/TTracedCall.h"
#include "features/feature_access.h"
#include "features/feature_names.h"
#include "features/TValueText.h"
#include "features/value_texts.h"
#include "utility/outputs.h"
#include "utility/TQuorinMisc.h"
#include "vxmcd.h"

#include <cwchar>
#include <iterator>

// Under its decorated name the function takes a reference. The plain name is a separate function, because a
// reference is never null to a compiler and a pointer may be.
VXMCD_API void extractNumberFromString(wchar_t* text, int& number);
extern "C" VXMCD_API void PlainExtractNumberFromString(wchar_t* text,
                                                       int* number) __asm__("extractNumberFromString");

namespace EntryPoint {

namespace {

constexpr int kModelTextLength = 32;
constexpr int kHeadModelLength = 4096;
constexpr float kDefaultPixelMicrometres = 10.0F;

// `bit` if the camera has the feature.
unsigned int BitIf(int coreHandle, const wchar_t* feature, unsigned int bit)
{
  return isImplemented(coreHandle, feature) ? bit : 0;
}

template <class Visit>
void VisitValues(int coreHandle, const wchar_t* feature, Visit visit)
{
  int count = 0;
  if (ReadValueCount(coreHandle, feature, count) != VX_SUCCESS) return;
  const auto read = [=](int index, std::wstring& value) {
    TValueText text;
    const int code = text.Read(coreHandle, feature, index);
    value = text.Get();
    return code;
  };
  VisitTexts(count, read, visit);
}

// A failed read gives an empty text.
std::wstring ReadShortString(int coreHandle, const wchar_t* feature)
{
  std::wstring text;
  ReadString(coreHandle, feature, kModelTextLength, text);
  return text;
}

unsigned int AcquisitionModes(int coreHandle)
{
  return VXMCD_ACQUISITION_SINGLE | BitIf(coreHandle, Feature::kFrameCount, VXMCD_ACQUISITION_SERIES) |
         BitIf(coreHandle, Feature::kOverlap, VXMCD_ACQUISITION_OVERLAP);
}

unsigned int ReadModes(int coreHandle)
{
  return VXMCD_READ_FULL_IMAGE | BitIf(coreHandle, Feature::kAOILeft, VXMCD_READ_SUB_IMAGE) |
         BitIf(coreHandle, Feature::kAOILayout, VXMCD_READ_TRACKS);
}

unsigned int TriggerModes(int coreHandle)
{
  if (!isImplemented(coreHandle, Feature::kTriggerMode)) return VXMCD_TRIGGER_INTERNAL;
  std::wstring external;
  TriggerModeFeatureFinder(external);
  const struct
  {
    const wchar_t* text;
    unsigned int bit;
  } rows[] = {
      {FeatureText::kInternal, VXMCD_TRIGGER_INTERNAL},
      {external.c_str(), VXMCD_TRIGGER_EXTERNAL},
      {FeatureText::kExternalStart, VXMCD_TRIGGER_EXTERNAL_START},
      {FeatureText::kExternalExposure, VXMCD_TRIGGER_EXTERNAL_EXPOSURE},
      {FeatureText::kSoftware, VXMCD_TRIGGER_SOFTWARE},
  };
  unsigned int modes = 0;
  VisitValues(coreHandle, Feature::kTriggerMode, [&](const std::wstring& value) {
    for (const auto& row : rows)
      if (value == row.text) modes |= row.bit;
  });
  return modes;
}

unsigned int CameraType(int coreHandle)
{
  const std::wstring model = ReadShortString(coreHandle, Feature::kCameraModel);
  if (model == L"TRELLIS CMOS") return VXMCD_CAMERA_TRELLIS;
  if (model == L"RQ512_LX") return VXMCD_CAMERA_RQ512;
  if (ReadShortString(coreHandle, Feature::kHardwareType) == L"KESTRA") return VXMCD_CAMERA_KESTRA;
  return VXMCD_CAMERA_OTHER;
}

unsigned int PixelMode(int /*coreHandle*/)
{
  return 4;
}

unsigned int SettableFunctions(int coreHandle)
{
  unsigned int functions = VXMCD_SET_ALWAYS;
  functions |= BitIf(coreHandle, Feature::kPixelReadoutRate, VXMCD_SET_READOUT_RATE);
  if (isImplemented(coreHandle, Feature::kAOIHBin) || isImplemented(coreHandle, Feature::kAOIBinning))
    functions |= VXMCD_SET_BINNING;
  functions |= BitIf(coreHandle, Feature::kAOILayout, VXMCD_SET_TRACKS);
  functions |= BitIf(coreHandle, Feature::kPreAmpGain, VXMCD_SET_PRE_AMP_GAIN);
  functions |= BitIf(coreHandle, Feature::kBaselineClamp, VXMCD_SET_BASELINE_CLAMP);
  if (IsWritable(coreHandle, Feature::kTargetSensorTemperature)) functions |= VXMCD_SET_TEMPERATURE;
  return functions;
}

unsigned int ReadableFunctions(int coreHandle)
{
  return VXMCD_GET_ALWAYS | BitIf(coreHandle, Feature::kSensorTemperature, VXMCD_GET_TEMPERATURE);
}

unsigned int Features(int coreHandle)
{
  unsigned int features = VXMCD_FEATURES_ALWAYS;
  if (isImplemented(coreHandle, Feature::kFanSpeed)) {
    features |= VXMCD_FEATURE_FAN;
    VisitValues(coreHandle, Feature::kFanSpeed, [&](const std::wstring& value) {
      if (value == FeatureText::kLow) features |= VXMCD_FEATURE_FAN_LOW;
    });
  }
  features |= BitIf(coreHandle, Feature::kMetadataEnable, VXMCD_FEATURE_METADATA);
  features |= BitIf(coreHandle, Feature::kExposureStartEvent, VXMCD_FEATURE_EXPOSURE_START_EVENT);
  features |= BitIf(coreHandle, Feature::kExposureEndEvent, VXMCD_FEATURE_EXPOSURE_END_EVENT);
  return features;
}

unsigned int Nothing(int /*coreHandle*/)
{
  return 0;
}

// The words of the record after its size, in their order.
struct TCapabilityWord
{
  unsigned int vxmcd_Capabilities::*word;
  unsigned int (*make)(int coreHandle);
};

constexpr TCapabilityWord kCapabilityWords[] = {
    {&vxmcd_Capabilities::acquisitionModes, AcquisitionModes},
    {&vxmcd_Capabilities::readModes, ReadModes},
    {&vxmcd_Capabilities::triggerModes, TriggerModes},
    {&vxmcd_Capabilities::cameraType, CameraType},
    {&vxmcd_Capabilities::pixelMode, PixelMode},
    {&vxmcd_Capabilities::settableFunctions, SettableFunctions},
    {&vxmcd_Capabilities::readableFunctions, ReadableFunctions},
    {&vxmcd_Capabilities::features, Features},
    {&vxmcd_Capabilities::reserved1, Nothing},
    {&vxmcd_Capabilities::reserved2, Nothing},
    {&vxmcd_Capabilities::reserved3, Nothing},
};

// "24.6.20.7": year, month, day and build. The first numbers go into the first places, the one after the last dot into
// the last; numbers between them without a place are dropped.
struct TFirmwareVersion
{
  int numbers[4] = {};
};

TFirmwareVersion ParseFirmwareVersion(const std::wstring& text)
{
  TFirmwareVersion version;
  std::size_t begin = 0;
  std::size_t place = 0;
  for (std::size_t dot = text.find(L'.'); dot != std::wstring::npos; dot = text.find(L'.', begin)) {
    if (place < std::size(version.numbers)) version.numbers[place++] = LeadingInt(text.substr(begin, dot - begin));
    begin = dot + 1;
  }
  version.numbers[3] = LeadingInt(text.substr(begin));
  return version;
}

// Years have two digits, from 1990 to 2089.
unsigned int ToDate(const TFirmwareVersion& version)
{
  const auto [year, month, day, build] = version.numbers;
  const unsigned int fullYear = static_cast<unsigned int>(year) + (year < 90 ? 2000u : 1900u);
  return fullYear * 10000u + static_cast<unsigned int>(month) * 100u + static_cast<unsigned int>(day);
}

// Reads a whole string feature. False when it or its length cannot be read.
bool ReadWholeString(int coreHandle, const wchar_t* feature, std::wstring& text)
{
  int length = 0;
  return ReadStringLength(coreHandle, feature, length) == VX_SUCCESS &&
         ReadString(coreHandle, feature, length, text) == VX_SUCCESS;
}

} // namespace

unsigned int GetCapabilities(vxmcd_Capabilities* capabilities)
{
  if (!capabilities) return RC_P1_INVALID;
  const TCameraUse camera;
  if (!camera) return RC_NOT_INITIALIZED;
  unsigned int end = sizeof(unsigned int); // of the words so far, the caller's size among them
  for (const TCapabilityWord& row : kCapabilityWords) {
    end += sizeof(unsigned int);
    if (capabilities->size < end) return RC_SUCCESS;
    capabilities->*row.word = row.make(camera.CoreHandle());
  }
  return RC_SUCCESS;
}

unsigned int GetHardwareVersion(unsigned int* out1, unsigned int* out2, unsigned int* out3, unsigned int* out4,
                                unsigned int* firmwareDate, unsigned int* firmwareBuild)
{
  const TCameraUse camera;
  if (!camera) return RC_NOT_INITIALIZED;
  if (!out1) return RC_P1_INVALID;
  if (!out2) return RC_P2_INVALID;
  if (!out3) return RC_P3_INVALID;
  if (!out4) return RC_P4_INVALID;
  if (!firmwareDate) return RC_P5_INVALID;
  if (!firmwareBuild) return RC_P6_INVALID;
  for (unsigned int* const output : {out1, out2, out3, out4, firmwareDate, firmwareBuild}) *output = 0;

  std::wstring text;
  if (!ReadWholeString(camera.CoreHandle(), Feature::kFirmwareVersion, text)) return RC_SUCCESS;
  const TFirmwareVersion version = ParseFirmwareVersion(text);
  *firmwareDate = ToDate(version);
  *firmwareBuild = static_cast<unsigned int>(version.numbers[3]);
  return RC_SUCCESS;
}

} // namespace EntryPoint

namespace {

void FindNumber(wchar_t* text, int* number)
{
  const wchar_t* const digits = text ? std::wcspbrk(text, L"0123456789") : nullptr;
  if (digits && number) *number = LeadingInt(digits);
}

} // namespace

void extractNumberFromString(wchar_t* text, int& number)
{
  PlainExtractNumberFromString(text, &number);
}

void PlainExtractNumberFromString(wchar_t* text, int* number)
{
  TTracedCall(FunctionNumber::extractNumberFromString, FindNumber)(text, number);
}

namespace EntryPoint {

unsigned int GetCameraSerialNumber(int* number)
{
  const TCameraUse camera;
  if (!camera) return RC_NOT_INITIALIZED;
  if (!number) return RC_P1_INVALID;
  *number = 0;
  std::wstring text;
  if (ReadWholeString(camera.CoreHandle(), Feature::kSerialNumber, text)) FindNumber(text.data(), number);
  return RC_SUCCESS;
}

unsigned int GetHeadModel(char* name)
{
  const TCameraUse camera;
  if (!camera) return RC_NOT_INITIALIZED;
  if (!name) return RC_P1_INVALID;
  name[0] = '\0';
  int length = 0;
  if (ReadStringLength(camera.CoreHandle(), Feature::kCameraModel, length) != VX_SUCCESS) return RC_SUCCESS;
  std::wstring text;
  if (ReadString(camera.CoreHandle(), Feature::kCameraModel, kHeadModelLength, text) == VX_SUCCESS)
    QuorinUtility::TQuorinMisc::snprintf(name, kHeadModelLength, "%ls", text.c_str());
  return RC_SUCCESS;
}

unsigned int GetPixelSize(float* width, float* height)
{
  const TCameraUse camera;
  if (!camera) return RC_NOT_INITIALIZED;
  for (float* const output : {width, height}) WriteOutput(output, kDefaultPixelMicrometres);
  if (!isImplemented(camera.CoreHandle(), Feature::kPixelWidth)) return RC_NOT_SUPPORTED;
  double widthMicrometres = 0.0;
  double heightMicrometres = 0.0;
  if (ReadFloat(camera.CoreHandle(), Feature::kPixelWidth, widthMicrometres) != VX_SUCCESS) return RC_P1_INVALID;
  if (ReadFloat(camera.CoreHandle(), Feature::kPixelHeight, heightMicrometres) != VX_SUCCESS) return RC_P2_INVALID;
  WriteOutput(width, widthMicrometres);
  WriteOutput(height, heightMicrometres);
  return RC_SUCCESS;
}

unsigned int GetControllerCardModel(char* name)
{
  WriteOutput(name, '\0');
  return RC_SUCCESS;
}

} // namespace EntryPoint
