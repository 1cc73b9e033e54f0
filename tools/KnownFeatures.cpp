// SPDX-License-Identifier: MIT
// The table of features.
#include "tools/KnownFeatures.h"

namespace vxtool {

namespace {

constexpr TKnownFeature kFeatures[] = {
    {"CameraModel", ""},
    {"HardwareType", ""},
    {"SerialNumber", ""},
    {"FirmwareVersion", ""},
    {"DeviceSource", ""},
    {"DDR2Type", ""},
    {"SensorWidth", "pixels"},
    {"SensorHeight", "pixels"},
    {"PixelWidth", "um"},
    {"PixelHeight", "um"},
    {"AOILayout", ""},
    {"AOILeft", ""},
    {"AOITop", ""},
    {"AOIWidth", "pixels"},
    {"AOIHeight", "pixels"},
    {"AOIHBin", ""},
    {"AOIVBin", ""},
    {"AOIBinning", ""},
    {"AOIHBinInternal", ""},
    {"AOIVBinInternal", ""},
    {"AOICount", ""},
    {"AOISelector", ""},
    {"AOIStride", "bytes"},
    {"PixelEncoding", ""},
    {"ImageSizeBytes", "bytes"},
    {"ExposureTime", "s"},
    {"FrameRate", "Hz"},
    {"BurstRate", "Hz"},
    {"ReadoutTime", "s"},
    {"Overlap", ""},
    {"AccumulateCount", ""},
    {"FrameCount", ""},
    {"CycleMode", ""},
    {"TriggerMode", ""},
    {"TriggerConfiguration", ""},
    {"SoftwareTrigger", ""},
    {"AcquisitionStart", ""},
    {"AcquisitionStop", ""},
    {"CameraAcquiring", ""},
    {"FramesLost", ""},
    {"MetadataEnable", ""},
    {"TimestampClock", "ticks"},
    {"TimestampClockFrequency", "Hz"},
    {"TimestampClockReset", ""},
    {"ExposureStartEvent", ""},
    {"ExposureEndEvent", ""},
    {"PixelReadoutRate", ""},
    {"PreAmpGain", ""},
    {"PreAmpGainSelector", ""},
    {"PreAmpGainChannel", ""},
    {"SimplePreAmpGainControl", ""},
    {"ElectronicShutteringMode", ""},
    {"BitDepth", ""},
    {"BaselineClamp", ""},
    {"BaselineLevel", "counts"},
    {"SensorCooling", ""},
    {"TargetSensorTemperature", "C"},
    {"SensorTemperature", "C"},
    {"TemperatureStatus", ""},
    {"FanSpeed", ""},
    {"RegisterAddress", ""},
    {"RegisterCount", ""},
    {"RegisterIndex", ""},
    {"RegisterValue", ""},
    {"RegisterRead", ""},
    {"RegisterWrite", ""},
    {"InternalI2CAddress", ""},
    {"InternalI2CByteCount", ""},
    {"InternalI2CByteSelector", ""},
    {"InternalI2CByte", ""},
    {"InternalI2CRead", ""},
    {"InternalI2CWrite", ""},
    {"ControllerI2CAddress", ""},
    {"ControllerI2CByteCount", ""},
    {"ControllerI2CByteSelector", ""},
    {"ControllerI2CByte", ""},
    {"ControllerI2CRead", ""},
    {"ControllerI2CWrite", ""},
};

} // namespace

std::span<const TKnownFeature> KnownFeatures()
{
  return kFeatures;
}

const char* UnitOfFeature(const std::string& name)
{
  for (const TKnownFeature& feature : kFeatures)
    if (name == feature.name) return feature.unit;
  return "";
}

} // namespace vxtool
