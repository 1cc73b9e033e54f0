// SPDX-License-Identifier: MIT
// The table of the library's features and the camera's features behind them. docs/real-cameras.md has it, too, by
// scripts/generate-interface.
#pragma once

#include <array>

namespace vxgenicam {

/// What makes a feature.
enum class EOrigin
{
  Derived,  ///< a feature of the camera, which has it by the standard
  Optional, ///< a feature of the camera, which may lack it: then the library lacks it, too
  Emulated, ///< this library, with features of the camera where it needs them
  MapFile,  ///< a feature of the camera that a map file names, as no standard does
};

/// As "FeatureSources" and the documentation have it.
constexpr const char* NameOf(EOrigin origin)
{
  switch (origin) {
  case EOrigin::Derived:
    return "derived";
  case EOrigin::Optional:
    return "optional";
  case EOrigin::Emulated:
    return "emulated";
  case EOrigin::MapFile:
    break;
  }
  return "map file";
}

/// One feature of the library: the camera's names for it, the best first, and how a value of the camera becomes one of
/// the library: value * scale + offset.
struct TMapRow
{
  const char* name;
  EOrigin origin;
  std::array<const char*, 3> nodes = {}; ///< null behind the last one
  double scale = 1.0;
};

constexpr double kSecondsPerMicrosecond = 1e-6;

/// The features that have a source, in the order of their names. Of a camera's names those of the Standard Features
/// Naming Convention (SFNC) come first, then those of older cameras.
constexpr TMapRow kMapRows[] = {
    {"AOIHBin", EOrigin::Optional, {"BinningHorizontal"}},
    {"AOIHeight", EOrigin::Derived, {"Height"}},
    {"AOILeft", EOrigin::Derived, {"OffsetX"}},
    {"AOITop", EOrigin::Derived, {"OffsetY"}},
    {"AOIVBin", EOrigin::Optional, {"BinningVertical"}},
    {"AOIWidth", EOrigin::Derived, {"Width"}},
    {"AcquisitionStart", EOrigin::Derived, {"AcquisitionStart"}},
    {"AcquisitionStop", EOrigin::Derived, {"AcquisitionStop"}},
    {"BaselineLevel", EOrigin::Optional, {"BlackLevel", "BlackLevelRaw"}},
    {"CameraModel", EOrigin::Derived, {"DeviceModelName"}},
    {"ElectronicShutteringMode", EOrigin::Optional, {"SensorShutterMode"}},
    {"ExposureTime",
     EOrigin::Derived,
     {"ExposureTime", "ExposureTimeAbs", "ExposureTimeRaw"},
     kSecondsPerMicrosecond},
    {"FanSpeed", EOrigin::MapFile},
    {"FirmwareVersion", EOrigin::Derived, {"DeviceFirmwareVersion", "DeviceVersion"}},
    {"FrameRate", EOrigin::Derived, {"AcquisitionFrameRate", "AcquisitionFrameRateAbs"}},
    {"Overlap", EOrigin::Optional, {"TriggerOverlap"}},
    {"PixelEncoding", EOrigin::Derived, {"PixelFormat"}},
    {"PixelHeight", EOrigin::Optional, {"SensorPixelHeight"}},
    {"PixelReadoutRate", EOrigin::Emulated, {"DeviceClockFrequency"}},
    {"PixelWidth", EOrigin::Optional, {"SensorPixelWidth"}},
    {"PreAmpGain", EOrigin::Optional, {"Gain"}},
    {"ReadoutTime", EOrigin::Optional, {"SensorReadoutTime"}, kSecondsPerMicrosecond},
    {"SensorCooling", EOrigin::MapFile},
    {"SensorHeight", EOrigin::Derived, {"SensorHeight", "HeightMax"}},
    {"SensorTemperature", EOrigin::Optional, {"DeviceTemperature", "TemperatureAbs"}},
    {"SensorWidth", EOrigin::Derived, {"SensorWidth", "WidthMax"}},
    {"SerialNumber", EOrigin::Derived, {"DeviceSerialNumber", "DeviceID"}},
    {"SoftwareTrigger", EOrigin::Derived, {"TriggerSoftware"}},
    {"TargetSensorTemperature", EOrigin::MapFile},
    {"TimestampClockReset", EOrigin::Emulated, {"TimestampReset", "GevTimestampControlReset"}},
};

} // namespace vxgenicam
