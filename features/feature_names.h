// SPDX-License-Identifier: MIT
// The names of the camera features that the library uses, and the enumerated texts it writes or compares.
#pragma once

/// Feature names, written once. A wrapper object keeps a pointer to one of these.
namespace Feature {

// The library itself.
inline constexpr const wchar_t* kDeviceCount = L"DeviceCount";

// What the camera is.
inline constexpr const wchar_t* kCameraModel = L"CameraModel";
inline constexpr const wchar_t* kHardwareType = L"HardwareType";
inline constexpr const wchar_t* kSerialNumber = L"SerialNumber";
inline constexpr const wchar_t* kFirmwareVersion = L"FirmwareVersion";
inline constexpr const wchar_t* kDDR2Type = L"DDR2Type";
inline constexpr const wchar_t* kSensorWidth = L"SensorWidth";
inline constexpr const wchar_t* kSensorHeight = L"SensorHeight";
inline constexpr const wchar_t* kPixelWidth = L"PixelWidth";
inline constexpr const wchar_t* kPixelHeight = L"PixelHeight";

// The image.
inline constexpr const wchar_t* kAOILayout = L"AOILayout";
inline constexpr const wchar_t* kAOIWidth = L"AOIWidth";
inline constexpr const wchar_t* kAOILeft = L"AOILeft";
inline constexpr const wchar_t* kAOIHeight = L"AOIHeight";
inline constexpr const wchar_t* kAOITop = L"AOITop";
inline constexpr const wchar_t* kAOIStride = L"AOIStride";
inline constexpr const wchar_t* kAOICount = L"AOICount";
inline constexpr const wchar_t* kAOISelector = L"AOISelector";
inline constexpr const wchar_t* kAOIHBin = L"AOIHBin";
inline constexpr const wchar_t* kAOIVBin = L"AOIVBin";
inline constexpr const wchar_t* kAOIBinning = L"AOIBinning";
inline constexpr const wchar_t* kAOIHBinInternal = L"AOIHBinInternal";
inline constexpr const wchar_t* kAOIVBinInternal = L"AOIVBinInternal";
inline constexpr const wchar_t* kPixelEncoding = L"PixelEncoding";
inline constexpr const wchar_t* kImageSizeBytes = L"ImageSizeBytes";

// Time, counts and triggers.
inline constexpr const wchar_t* kExposureTime = L"ExposureTime";
inline constexpr const wchar_t* kFrameRate = L"FrameRate";
inline constexpr const wchar_t* kBurstRate = L"BurstRate";
inline constexpr const wchar_t* kReadoutTime = L"ReadoutTime";
inline constexpr const wchar_t* kOverlap = L"Overlap";
inline constexpr const wchar_t* kAccumulateCount = L"AccumulateCount";
inline constexpr const wchar_t* kFrameCount = L"FrameCount";
inline constexpr const wchar_t* kCycleMode = L"CycleMode";
inline constexpr const wchar_t* kTriggerMode = L"TriggerMode";
inline constexpr const wchar_t* kTriggerConfiguration = L"TriggerConfiguration";
inline constexpr const wchar_t* kSoftwareTrigger = L"SoftwareTrigger";

// Acquisition and metadata.
inline constexpr const wchar_t* kAcquisitionStart = L"AcquisitionStart";
inline constexpr const wchar_t* kAcquisitionStop = L"AcquisitionStop";
inline constexpr const wchar_t* kCameraAcquiring = L"CameraAcquiring";
inline constexpr const wchar_t* kMetadataEnable = L"MetadataEnable";
inline constexpr const wchar_t* kTimestampClockReset = L"TimestampClockReset";
inline constexpr const wchar_t* kTimestampClockFrequency = L"TimestampClockFrequency";
inline constexpr const wchar_t* kExposureStartEvent = L"ExposureStartEvent";
inline constexpr const wchar_t* kExposureEndEvent = L"ExposureEndEvent";

// Read-out.
inline constexpr const wchar_t* kPixelReadoutRate = L"PixelReadoutRate";
inline constexpr const wchar_t* kPreAmpGain = L"PreAmpGain";
inline constexpr const wchar_t* kPreAmpGainSelector = L"PreAmpGainSelector";
inline constexpr const wchar_t* kPreAmpGainChannel = L"PreAmpGainChannel";
inline constexpr const wchar_t* kSimplePreAmpGainControl = L"SimplePreAmpGainControl";
inline constexpr const wchar_t* kElectronicShutteringMode = L"ElectronicShutteringMode";
inline constexpr const wchar_t* kBitDepth = L"BitDepth";
inline constexpr const wchar_t* kBaselineClamp = L"BaselineClamp";
inline constexpr const wchar_t* kBaselineLevel = L"BaselineLevel";

// Cooling.
inline constexpr const wchar_t* kSensorCooling = L"SensorCooling";
inline constexpr const wchar_t* kTargetSensorTemperature = L"TargetSensorTemperature";
inline constexpr const wchar_t* kSensorTemperature = L"SensorTemperature";
inline constexpr const wchar_t* kTemperatureStatus = L"TemperatureStatus";
inline constexpr const wchar_t* kFanSpeed = L"FanSpeed";

// Registers and buses. The bus features have a prefix each, see TSDK3i2c.
inline constexpr const wchar_t* kRegisterAddress = L"RegisterAddress";
inline constexpr const wchar_t* kRegisterCount = L"RegisterCount";
inline constexpr const wchar_t* kRegisterIndex = L"RegisterIndex";
inline constexpr const wchar_t* kRegisterValue = L"RegisterValue";
inline constexpr const wchar_t* kRegisterRead = L"RegisterRead";
inline constexpr const wchar_t* kRegisterWrite = L"RegisterWrite";
inline constexpr const wchar_t* kControllerI2CRead = L"ControllerI2CRead";
inline constexpr const wchar_t* kControllerI2CWrite = L"ControllerI2CWrite";

} // namespace Feature

/// Texts of enumerated values.
namespace FeatureText {

inline constexpr const wchar_t* kTrack = L"Track";
inline constexpr const wchar_t* kImage = L"Image";
inline constexpr const wchar_t* kFixed = L"Fixed";
inline constexpr const wchar_t* kContinuous = L"Continuous";
inline constexpr const wchar_t* kInternal = L"Internal";
inline constexpr const wchar_t* kExternal = L"External";
inline constexpr const wchar_t* kExternalLevelTransition = L"External Level Transition";
inline constexpr const wchar_t* kExternalStart = L"External Start";
inline constexpr const wchar_t* kExternalExposure = L"External Exposure";
inline constexpr const wchar_t* kSoftware = L"Software";
inline constexpr const wchar_t* kMono8 = L"Mono8";
inline constexpr const wchar_t* kMono12 = L"Mono12";
inline constexpr const wchar_t* kMono12Packed = L"Mono12Packed";
inline constexpr const wchar_t* kMono16 = L"Mono16";
inline constexpr const wchar_t* kMono32 = L"Mono32";
inline constexpr const wchar_t* kLow = L"Low";
inline constexpr const wchar_t* kHigh = L"High";
inline constexpr const wchar_t* kBoth = L"Both";
inline constexpr const wchar_t* kOn = L"On";
inline constexpr const wchar_t* kOff = L"Off";

} // namespace FeatureText
