// SPDX-License-Identifier: MIT
// Everything that the library reports about a camera, with the result code of each call.
#pragma once

#include "vxmcd.h"

#include <optional>
#include <string>
#include <vector>

namespace vxtool {

/// What a function of the library answered. Without a value: it failed with the code, or, with a code of success,
/// the camera has no such value.
template <typename Value>
struct TAnswer
{
  const char* function = "";
  unsigned int code = RC_SUCCESS;
  std::optional<Value> value;
};

struct TFirmware
{
  unsigned int date = 0; ///< year x 10000 + month x 100 + day
  unsigned int build = 0;
};

template <typename Number>
struct TPair
{
  Number first = 0;
  Number second = 0;
};

struct TTemperature
{
  float celsius = 0.0F;
  unsigned int state = RC_SUCCESS; ///< an RC_TEMP_ code; RC_SUCCESS when only the temperature is known
};

struct TTimings
{
  float exposureSeconds = 0.0F;
  float accumulateSeconds = 0.0F;
  float kineticSeconds = 0.0F;
};

struct TAmplifierAnswers
{
  TAnswer<std::string> description;
  TAnswer<float> maximumMegahertz;
};

struct TGainAnswers
{
  TAnswer<std::string> text;
  TAnswer<float> factor;
  TAnswer<std::vector<TPair<int>>> usableWith; ///< channels and amplifiers
};

/// Lists have one entry for each index that the camera has.
struct TCameraDescription
{
  int number = 0;
  TAnswer<long> handle;
  TAnswer<std::string> libraryVersion;
  TAnswer<std::string> model;
  TAnswer<int> serial;
  TAnswer<TFirmware> firmware;
  std::optional<std::string> source; ///< where the camera comes from, "simulated" for example
  TAnswer<TPair<int>> sensorPixels;
  TAnswer<TPair<float>> pixelMicrometres;
  TAnswer<vxmcd_Capabilities> capabilities;
  TAnswer<int> maximumHorizontalBinning;
  TAnswer<int> maximumVerticalBinning;
  std::vector<TAnswer<int>> channelBits;
  std::vector<TAmplifierAnswers> amplifiers;
  std::vector<TAnswer<float>> speedsMegahertz;
  std::vector<TGainAnswers> gains;
  TAnswer<bool> isBaselineClamped;
  TAnswer<TTemperature> temperature;
  TAnswer<float> targetCelsius;
  TAnswer<TPair<int>> targetRange;
  TAnswer<bool> isCoolerOn;
  TAnswer<int> memoryUsedPercent;
  TAnswer<TTimings> timings;
  TAnswer<float> maximumExposureSeconds;
  TAnswer<float> readoutSeconds;
  TAnswer<long> ringBytes;
};

/// Asks the open camera. @param number  its number in the list
TCameraDescription DescribeOpenCamera(int number);

/// Single questions about the open camera.
TAnswer<std::string> AskModel();
TAnswer<int> AskSerial();
TAnswer<TPair<float>> AskPixelSize();
TAnswer<TTemperature> AskTemperature();
TAnswer<std::string> AskAmplifier(int amplifier);
TAnswer<std::string> AskGainText(int gain);
TAnswer<float> AskGainFactor(int gain);

} // namespace vxtool
