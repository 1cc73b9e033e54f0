// SPDX-License-Identifier: MIT
// The tables of the camera models.
#include "vxcore/simulated/TCameraModel.h"

namespace vxsim {

namespace {

constexpr long long kGiB = 1LL << 30;

/// The order of ETemperatureStatus.
const std::vector<const wchar_t*> kTemperatureStatuses = {L"Cooler Off", L"Stabilised", L"Not Reached", L"Drift",
                                                          L"Not Stabilised"};

/// Large sensor, two gain channels that can be combined, read out in two halves: 105 full frames a second.
TCameraModel MakeTrellis()
{
  return {
      .name = "TRELLIS CMOS",
      .cameraModel = L"TRELLIS CMOS",
      .hardwareType = L"TRELLIS",
      .serialNumber = L"VSC-00512",
      .firmwareVersion = L"24.6.20.7",
      .memoryType = L"1GB",
      .sensorWidth = 2048,
      .sensorHeight = 2048,
      .pixelMicrometres = 6.5,
      .fullWellElectrons = 30000.0,
      .quantumEfficiency = 0.72,
      .darkElectronsPerSecond = 0.1,
      .darkDoublingCelsius = 6.0,
      .readNoiseMegahertz = 280.0,
      .globalReadNoiseFactor = 1.5,
      .thermal = {-30.0, 20.0, 0.0, 52.0, 30.0, 0.1},
      .readoutPorts = 2,
      .clocksPerRow = 2592.0,
      .minimumExposureSeconds = 1e-5,
      .maximumExposureSeconds = 30.0,
      .minimumFrameRate = 0.01,
      .maximumBinning = 64,
      .maximumTracks = 256,
      .memoryBytes = kGiB,
      .stridePadding = 0,
      .timestampFrequency = 100'000'000,
      .exposureWhileAcquiring = true,
      .choices =
          {
              {EChoice::AoiLayout, {L"Image", L"Track"}, 0},
              {EChoice::PixelEncoding, {L"Mono12", L"Mono12Packed", L"Mono16", L"Mono32"}, 2},
              {EChoice::CycleMode, {L"Fixed", L"Continuous"}, 0},
              {EChoice::TriggerMode,
               {L"Internal", L"Software", L"External", L"External Start", L"External Exposure"},
               0},
              {EChoice::ShutteringMode, {L"Rolling", L"Global"}, 0},
              {EChoice::PixelReadoutRate, {L"100 MHz", L"200 MHz", L"280 MHz"}, 2},
              {EChoice::PreAmpGainChannel, {L"Low", L"High", L"Both"}, 2},
              {EChoice::SimplePreAmpGainControl,
               {L"Gain 1 (11-bit)", L"Gain 2 (11-bit)", L"Gain 1+2 (16-bit)"},
               2},
              {EChoice::BitDepth, {L"11 Bit", L"16 Bit"}, 1},
              {EChoice::FanSpeed, {L"Off", L"Low", L"On"}, 2},
              {EChoice::TemperatureStatus, kTemperatureStatuses, 0},
          },
      .gains = {{L"Low", 15.0, 14.0, 11, {}}, {L"High", 0.6, 1.2, 11, {}}, {L"Both", 0.5, 1.3, 16, {}}},
      .i2cDevices = {{EI2cBus::Internal, 0x2C, EI2cDevice::Potentiometer},
                     {EI2cBus::Internal, 0x2D, EI2cDevice::Potentiometer},
                     {EI2cBus::Internal, 0x48, EI2cDevice::RailMonitor},
                     {EI2cBus::Internal, 0x4A, EI2cDevice::TemperatureProbe},
                     {EI2cBus::Controller, 0x2E, EI2cDevice::Potentiometer},
                     {EI2cBus::Controller, 0x4B, EI2cDevice::TemperatureProbe}},
      .families = Family::kMemoryType | Family::kFreeBinning | Family::kTracks | Family::kAccumulation |
                  Family::kEvents | Family::kControllerBus,
  };
}

/// Small and fast: 650 full frames a second, tens of thousands of small areas. Gain is set directly.
TCameraModel MakeRq512()
{
  return {
      .name = "RQ512_LX",
      .cameraModel = L"RQ512_LX",
      .hardwareType = L"RQ",
      .serialNumber = L"RQ-20417",
      .firmwareVersion = L"23.11.2.15",
      .memoryType = L"256MB",
      .sensorWidth = 512,
      .sensorHeight = 512,
      .pixelMicrometres = 16.0,
      .fullWellElectrons = 80000.0,
      .quantumEfficiency = 0.9,
      .darkElectronsPerSecond = 0.02,
      .darkDoublingCelsius = 7.0,
      .readNoiseMegahertz = 200.0,
      .globalReadNoiseFactor = 1.0,
      .thermal = {-80.0, 20.0, -60.0, 100.0, 60.0, 0.05},
      .readoutPorts = 1,
      .clocksPerRow = 600.0,
      .minimumExposureSeconds = 1e-6,
      .maximumExposureSeconds = 10.0,
      .minimumFrameRate = 0.05,
      .maximumBinning = 16,
      .maximumTracks = 1,
      .memoryBytes = kGiB / 4,
      .stridePadding = 0,
      .timestampFrequency = 40'000'000,
      .exposureWhileAcquiring = true,
      .choices =
          {
              {EChoice::PixelEncoding, {L"Mono8", L"Mono12", L"Mono12Packed", L"Mono16", L"Mono32"}, 3},
              {EChoice::CycleMode, {L"Fixed", L"Continuous"}, 0},
              {EChoice::TriggerMode, {L"Internal", L"Software", L"External", L"External Start"}, 0},
              {EChoice::ShutteringMode, {L"Global"}, 0},
              {EChoice::PixelReadoutRate, {L"100 MHz", L"200 MHz"}, 1},
              {EChoice::PreAmpGainChannel, {L"Low", L"High"}, 0},
              {EChoice::PreAmpGainSelector, {L"Low", L"High"}, 0},
              {EChoice::PreAmpGain, {L"1x", L"2x", L"10x", L"30x"}, 0},
              {EChoice::BitDepth, {L"12 Bit"}, 0},
              {EChoice::FanSpeed, {L"Off", L"Low", L"On"}, 2},
              {EChoice::TemperatureStatus, kTemperatureStatuses, 0},
          },
      .gains = {{L"Low", 20.0, 18.0, 12, {L"1x", L"2x"}}, {L"High", 20.0, 2.0, 12, {L"10x", L"30x"}}},
      .i2cDevices = {{EI2cBus::Internal, 0x2C, EI2cDevice::Potentiometer},
                     {EI2cBus::Internal, 0x48, EI2cDevice::RailMonitor},
                     {EI2cBus::Internal, 0x4A, EI2cDevice::TemperatureProbe},
                     {EI2cBus::Controller, 0x4B, EI2cDevice::TemperatureProbe}},
      .families = Family::kMemoryType | Family::kFreeBinning | Family::kAccumulation | Family::kControllerBus,
  };
}

/// Mid-sized, square binning only, no accumulation, padded rows, triggered by level transitions.
TCameraModel MakeTarn()
{
  return {
      .name = "TARN 1M",
      .cameraModel = L"TARN 1M",
      .hardwareType = L"KESTRA",
      .serialNumber = L"K-3051",
      .firmwareVersion = L"95.1.2.3",
      .memoryType = L"512MB",
      .sensorWidth = 1280,
      .sensorHeight = 1024,
      .pixelMicrometres = 5.3,
      .fullWellElectrons = 20000.0,
      .quantumEfficiency = 0.6,
      .darkElectronsPerSecond = 0.5,
      .darkDoublingCelsius = 8.0,
      .readNoiseMegahertz = 100.0,
      .globalReadNoiseFactor = 1.0,
      .thermal = {-10.0, 30.0, 10.0, 34.0, 20.0, 0.5},
      .readoutPorts = 1,
      .clocksPerRow = 1400.0,
      .minimumExposureSeconds = 2e-5,
      .maximumExposureSeconds = 60.0,
      .minimumFrameRate = 0.01,
      .maximumBinning = 8,
      .maximumTracks = 64,
      .memoryBytes = kGiB / 2,
      .stridePadding = 16,
      .timestampFrequency = 1'000'000,
      .exposureWhileAcquiring = false,
      .choices =
          {
              {EChoice::AoiLayout, {L"Image", L"Track"}, 0},
              {EChoice::AoiBinning, {L"1x1", L"2x2", L"3x3", L"4x4", L"8x8"}, 0},
              {EChoice::PixelEncoding, {L"Mono8", L"Mono12", L"Mono12Packed", L"Mono16"}, 3},
              {EChoice::CycleMode, {L"Fixed", L"Continuous"}, 0},
              {EChoice::TriggerMode,
               {L"Internal", L"Software", L"External Level Transition", L"External Start", L"External Exposure"},
               0},
              {EChoice::TriggerConfiguration, {L"Rising", L"Falling", L"Both"}, 0},
              {EChoice::ShutteringMode, {L"Rolling"}, 0},
              {EChoice::PixelReadoutRate, {L"50 MHz", L"100 MHz"}, 1},
              {EChoice::PreAmpGainChannel, {L"Low"}, 0},
              {EChoice::PreAmpGainSelector, {L"Low"}, 0},
              {EChoice::PreAmpGain, {L"1.0", L"4.0"}, 0},
              {EChoice::BitDepth, {L"12 Bit"}, 0},
              {EChoice::FanSpeed, {L"Off", L"On"}, 1},
              {EChoice::TemperatureStatus, kTemperatureStatuses, 0},
          },
      .gains = {{L"Low", 5.0, 4.5, 12, {L"1.0", L"4.0"}}},
      .i2cDevices = {{EI2cBus::Internal, 0x2C, EI2cDevice::Potentiometer},
                     {EI2cBus::Internal, 0x4A, EI2cDevice::TemperatureProbe}},
      .families = Family::kTracks,
  };
}

} // namespace

const std::vector<TCameraModel>& CameraModels()
{
  static const auto& models = *new std::vector<TCameraModel>{MakeTrellis(), MakeRq512(), MakeTarn()};
  return models;
}

const TCameraModel* FindCameraModel(std::string_view name)
{
  for (const TCameraModel& model : CameraModels()) {
    if (name == model.name) return &model;
  }
  return nullptr;
}

} // namespace vxsim
