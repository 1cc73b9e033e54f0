// SPDX-License-Identifier: MIT
// The names of the camera features that the library uses, and the enumerated texts it writes or compares.
#pragma once

/// Feature names, written once. A wrapper object keeps a pointer to one of these.
namespace Feature {

// The library itself.
inline constexpr const wchar_t* kDeviceCount = L"DeviceCount";

// What the camera is.
inline constexpr const wchar_t* kCameraModel = L"CameraModel";
inline constexpr const wchar_t* kSensorWidth = L"SensorWidth";
inline constexpr const wchar_t* kSensorHeight = L"SensorHeight";

// The image.
inline constexpr const wchar_t* kAOILayout = L"AOILayout";
inline constexpr const wchar_t* kAOIWidth = L"AOIWidth";
inline constexpr const wchar_t* kAOIHeight = L"AOIHeight";
inline constexpr const wchar_t* kAOIStride = L"AOIStride";
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

// Read-out.
inline constexpr const wchar_t* kPreAmpGain = L"PreAmpGain";
inline constexpr const wchar_t* kPreAmpGainSelector = L"PreAmpGainSelector";
inline constexpr const wchar_t* kPreAmpGainChannel = L"PreAmpGainChannel";
inline constexpr const wchar_t* kSimplePreAmpGainControl = L"SimplePreAmpGainControl";
inline constexpr const wchar_t* kElectronicShutteringMode = L"ElectronicShutteringMode";
inline constexpr const wchar_t* kBitDepth = L"BitDepth";
inline constexpr const wchar_t* kBaselineClamp = L"BaselineClamp";

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

} // namespace FeatureText
