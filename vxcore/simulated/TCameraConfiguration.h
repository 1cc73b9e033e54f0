// SPDX-License-Identifier: MIT
// What a configuration says about one simulated camera, as plain values.
#pragma once

#include "vxcore/simulated/imaging/TFrameSettings.h"
#include "vxcore/simulated/TFeature.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace vxsim {

/// The clock of a camera's frames.
enum class EClock
{
  Real, ///< frames are made in real time, on a thread of the camera
  Free, ///< frames are made when they are waited for; the camera's clock advances by what they would have taken
};

/// Where a camera's frames come from.
enum class ESource
{
  Sensor, ///< exposed by the camera
  Manual, ///< pushed through the control functions
};

/// The pulses on a camera's external trigger input.
struct TTriggerSource
{
  double periodSeconds = 0.0; ///< from one pulse to the next; 0: only those of VXSIM_FireTrigger()
  double widthSeconds = 0.001;
  double delaySeconds = 0.0; ///< from the start of the acquisition to the first pulse
};

/// A device that is missing on a camera's I2C bus.
struct TMissingI2cDevice
{
  bool onController = false;
  int address = 0;
};

/// One attached camera. Built by TSimulatorConfiguration, read-only afterwards.
struct TCameraConfiguration
{
  std::string model = "TRELLIS CMOS";
  EClock clock = EClock::Real;
  ESource source = ESource::Sensor;
  TTriggerSource trigger;
  long long memoryBytes = 0;  ///< 0: the model's own
  long long memoryFrames = 0; ///< 0: as many as fit into memoryBytes
  int stridePadding = -1;     ///< bytes behind each row; -1: the model's own
  uint64_t seed = 1;
  TSceneSettings scene;
  std::optional<double> gainElectronsPerCount; ///< in place of the model's, for every gain
  std::optional<double> readNoiseElectrons;
  std::optional<double> fullWellElectrons;
  std::optional<double> darkElectronsPerSecond; ///< at 0 degrees Celsius
  std::optional<double> darkDoublingCelsius;
  double ambientCelsius = 22.0;
  double timeScale = 1.0; ///< how much faster than the camera's clock temperatures change
  std::vector<TMissingI2cDevice> missingI2cDevices;
  std::map<std::wstring, TFeatureOverride> features;
};

} // namespace vxsim
