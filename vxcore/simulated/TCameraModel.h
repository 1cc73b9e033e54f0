// SPDX-License-Identifier: MIT
// What a camera model is: its sensor, its speeds, and which features it has with which values.
#pragma once

#include "vxcore/simulated/TChoice.h"
#include "vxcore/simulated/TThermalModel.h"

#include <cstdint>
#include <string_view>
#include <vector>

namespace vxsim {

/// The most cameras that can be attached.
constexpr int kMaxCameras = 64;

/// The texts of an enumerated feature and the one chosen when the camera is opened.
struct TModelChoice
{
  EChoice choice;
  std::vector<const wchar_t*> texts;
  int initial;
};

/// One gain channel of a model: how electrons become counts when "PreAmpGainChannel" has that text.
struct TModelGain
{
  const wchar_t* channel;
  double electronsPerCount;  ///< at a "PreAmpGain" of 1
  double readNoiseElectrons; ///< at TCameraModel::readNoiseMegahertz
  int bitDepth;
  std::vector<const wchar_t*> preAmpGains; ///< the texts of "PreAmpGain" that are this channel's
};

enum class EI2cBus
{
  Internal,
  Controller
};

enum class EI2cDevice
{
  Potentiometer,
  RailMonitor, ///< its rails follow the wipers of the bus's first potentiometer
  TemperatureProbe
};

/// A device on one of the camera's I2C buses.
struct TModelI2cDevice
{
  EI2cBus bus;
  uint8_t address;
  EI2cDevice kind;
};

/// Families of features that a model may have; the rows of the feature tables say which feature belongs to which.
namespace Family {
constexpr unsigned kCommon = 0; ///< every model has it
constexpr unsigned kMemoryType = 1;
constexpr unsigned kFreeBinning = 2; ///< separate factors for rows and columns
constexpr unsigned kTracks = 4;
constexpr unsigned kAccumulation = 8;
constexpr unsigned kEvents = 16;
constexpr unsigned kControllerBus = 32;
} // namespace Family

/// A camera model. Constant tables; docs/simulator.md describes them.
struct TCameraModel
{
  const char* name; ///< what a configuration calls it, and what "CameraModel" reads
  const wchar_t* cameraModel;
  const wchar_t* hardwareType;
  const wchar_t* serialNumber;
  const wchar_t* firmwareVersion;
  const wchar_t* memoryType;

  int sensorWidth;
  int sensorHeight;
  double pixelMicrometres;
  double fullWellElectrons;
  double quantumEfficiency;
  double darkElectronsPerSecond; ///< at 0 degrees Celsius
  double darkDoublingCelsius;    ///< warming by this doubles it
  double readNoiseMegahertz;     ///< pixel rate at which the gains have their read noise
  double globalReadNoiseFactor;  ///< how much noisier than a rolling shutter a global one is
  TModelThermal thermal;

  int readoutPorts;    ///< halves of the sensor that are read out at the same time
  double clocksPerRow; ///< pixel clocks for one row, overhead included
  double minimumExposureSeconds;
  double maximumExposureSeconds;
  double minimumFrameRate;
  int maximumBinning;
  int maximumTracks;
  long long memoryBytes;
  int stridePadding;
  long long timestampFrequency;
  bool exposureWhileAcquiring; ///< "ExposureTime" may be written in a run

  std::vector<TModelChoice> choices; ///< every enumerated feature of the model
  std::vector<TModelGain> gains;
  std::vector<TModelI2cDevice> i2cDevices;
  unsigned families; ///< the other features that it has beside those of every model
};

/// The models there are.
const std::vector<TCameraModel>& CameraModels();
/// The model of that name, or null.
const TCameraModel* FindCameraModel(std::string_view name);

} // namespace vxsim
