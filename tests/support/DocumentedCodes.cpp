// SPDX-License-Identifier: MIT
// The result codes of each entry point, in the order of the public header.
#include "tests/support/DocumentedCodes.h"

#include "vxmcd.h"

#include <map>
#include <set>

namespace {

using TCodes = std::set<unsigned int>;

const TCodes kInvalid1To2 = {RC_P1_INVALID, RC_P2_INVALID};
const TCodes kInvalid1To3 = {RC_P1_INVALID, RC_P2_INVALID, RC_P3_INVALID};
const TCodes kInvalid1To4 = {RC_P1_INVALID, RC_P2_INVALID, RC_P3_INVALID, RC_P4_INVALID};
const TCodes kInvalid1To6 = {RC_P1_INVALID, RC_P2_INVALID, RC_P3_INVALID,
                             RC_P4_INVALID, RC_P5_INVALID, RC_P6_INVALID};
const TCodes kAsTheCameraAnswers = {RC_NOT_SUPPORTED, RC_NOT_AVAILABLE, RC_P1_INVALID};
const TCodes kTemperature = {RC_TEMP_OFF,      RC_TEMP_STABILIZED,     RC_TEMP_NOT_REACHED,
                             RC_TEMP_DRIFT,    RC_TEMP_NOT_STABILIZED, RC_P1_INVALID,
                             RC_NOT_SUPPORTED, RC_FEATURE_ERROR};
const TCodes kTransfer = {RC_NOT_SUPPORTED, RC_P1_INVALID, RC_P2_INVALID, RC_I2C_ERROR};
const TCodes kAcquired = {RC_ACQUIRING, RC_P1_INVALID, RC_P2_INVALID, RC_NO_NEW_DATA, RC_NOT_SUPPORTED};
const TCodes kOldest = {RC_P1_INVALID, RC_P2_INVALID, RC_NO_NEW_DATA, RC_NOT_SUPPORTED};
const TCodes kMostRecent = {RC_P1_INVALID, RC_P2_INVALID, RC_NO_NEW_DATA, RC_FRAME_UNAVAILABLE, RC_NOT_SUPPORTED};
const TCodes kRange = {RC_P1_INVALID, RC_P2_INVALID,  RC_P3_INVALID,
                       RC_P4_INVALID, RC_NO_NEW_DATA, RC_NOT_SUPPORTED};
const TCodes kPots = {0, 1}; // statuses of their own
const TCodes kNoTriggerBoard = {1};

/// Besides RC_SUCCESS: functions that need no open camera.
const std::map<std::string, TCodes> kOfTheLibrary = {
    {"GetAvailableCameras", {RC_NOT_SUPPORTED}},
    {"GetCameraHandle", {RC_P1_INVALID, RC_NOT_SUPPORTED}},
    {"SetCurrentCamera", {RC_P1_INVALID, RC_NOT_SUPPORTED}},
    {"GetCurrentCamera", {}},
    {"GetSDK3Handle", {RC_P1_INVALID}},
    {"Initialize", {RC_NO_CAMERA}},
    {"getSDKVersion", {}},
    {"GetSoftwareVersion", {}},
    {"GetVersionInfo", {RC_P1_INVALID, RC_P2_INVALID, RC_P3_INVALID, RC_NOT_AVAILABLE}},
    {"TriggerModeFeatureFinder", {RC_FEATURE_ERROR}},
    {"SetADChannel", {RC_P1_INVALID}},
    {"GetNumberADChannels", {}},
    {"GetBitDepth", kInvalid1To2},
    {"GetControllerCardModel", {}},
    {"FreeInternalMemory", {}},
    {"TriggerBoard_Initialize", kNoTriggerBoard},
    {"TriggerBoard_ShutDown", kNoTriggerBoard},
    {"TriggerBoard_GetAvailableTriggers", kNoTriggerBoard},
    {"TriggerBoard_GetTriggerHandle", kNoTriggerBoard},
    {"TriggerBoard_SetCurrentTrigger", kNoTriggerBoard},
    {"TriggerBoard_I2CWrite", {}},
    {"vxsys_GetKeepCleanTime", {}},
    {"vxsys_GetTemperatureTolerance", {}},
    {"vxsys_GetHSSpeedLimits", {}},
    {"vxsys_GetDummyPixels", {}},
    {"vxsys_GetMinimumNumberInSeries", {}},
    {"vxsys_IsVacuumCooling", {}},
    {"vxsys_IsTemperatureAvailableDuringAcquisition", {RC_P1_INVALID}},
    {"vxsys_GetDDGIOCFrequencyRange", {RC_NOT_SUPPORTED}},
    {"createAcquisitionEvents", {}},
};

/// Besides RC_SUCCESS and RC_NOT_INITIALIZED.
const std::map<std::string, TCodes> kOfACamera = {
    {"ShutDown", {}},
    {"SetExposureTime", {RC_NOT_SUPPORTED, RC_ACQUIRING, RC_NOT_AVAILABLE, RC_P1_INVALID}},
    {"SetAccumulationCycleTime", {RC_NOT_SUPPORTED, RC_P1_INVALID}},
    {"SetKineticCycleTime", {RC_NOT_SUPPORTED, RC_P1_INVALID}},
    {"SetAcquisitionMode", {RC_P1_INVALID}},
    {"SetNumberAccumulations", kAsTheCameraAnswers},
    {"SetNumberKinetics", {RC_NOT_SUPPORTED, RC_P1_INVALID}},
    {"SetReadMode", {RC_P1_INVALID}},
    {"SetTriggerMode", {RC_INVALID_TRIGGER_MODE, RC_P1_INVALID, RC_FEATURE_ERROR}},
    {"SendSoftwareTrigger", {RC_NOT_SUPPORTED}},
    {"SetOverlapMode", kAsTheCameraAnswers},
    {"SetFrameTransferMode", kAsTheCameraAnswers},
    {"GetAcquisitionTimings", {}},
    {"GetReadOutTime", kAsTheCameraAnswers},
    {"GetMaximumExposure", {RC_P1_INVALID}},
    {"GetDetector", kInvalid1To2},
    {"SetImage", kInvalid1To6},
    {"SetRandomTracks", {RC_NOT_SUPPORTED, RC_P1_INVALID, RC_P2_INVALID}},
    {"GetMaximumBinning", {0, RC_P2_INVALID, RC_P3_INVALID, RC_BINNING_QUERY_FAILED}},
    {"SetOutputAmplifier", {RC_P1_INVALID}},
    {"GetNumberAmp", {}},
    {"IsAmplifierAvailable", {RC_INVALID_AMPLIFIER}},
    {"GetAmpDesc", {RC_P1_INVALID}},
    {"GetAmpMaxSpeed", {RC_P1_INVALID}},
    {"SetHSSpeed", kInvalid1To2},
    {"GetNumberHSSpeeds", kInvalid1To2},
    {"GetHSSpeed", kInvalid1To3},
    {"SetPreAmpGain", {RC_P1_INVALID}},
    {"GetNumberPreAmpGains", {}},
    {"GetPreAmpGain", {RC_P1_INVALID}},
    {"IsPreAmpGainAvailable", kInvalid1To4},
    {"GetPreAmpGainText", kInvalid1To2},
    {"SetBaselineClamp", kAsTheCameraAnswers},
    {"GetBaselineClamp", kAsTheCameraAnswers},
    {"GetFIFOUsage", {RC_P1_INVALID, RC_NOT_SUPPORTED}},
    {"SetTemperature", kAsTheCameraAnswers},
    {"CoolerON", {}},
    {"CoolerOFF", {}},
    {"IsCoolerOn", {RC_NOT_SUPPORTED, RC_P1_INVALID}},
    {"GetTemperatureF", kTemperature},
    {"GetTemperature", kTemperature},
    {"GetTemperatureRange", {RC_NOT_SUPPORTED}},
    {"GetTemperatureStatus", {}},
    {"SetFanMode", {RC_NOT_SUPPORTED, RC_P1_INVALID}},
    {"GetCapabilities", {RC_P1_INVALID}},
    {"GetHardwareVersion", kInvalid1To6},
    {"GetCameraSerialNumber", {RC_P1_INVALID}},
    {"GetHeadModel", {RC_P1_INVALID}},
    {"GetPixelSize", {RC_NOT_SUPPORTED, RC_P1_INVALID, RC_P2_INVALID}},
    {"I2CBurstRead", kTransfer},
    {"I2CBurstWrite", kTransfer},
    {"SetSpool", {RC_P2_INVALID, RC_P3_INVALID}},
    {"SetSpoolThreadCount", {RC_P1_INVALID}},
    {"vxsys_CameraPotsLoadFile", {RC_FILE_LOAD_ERROR}},
    {"vxsys_CameraPotsSaveFile", {RC_FILE_SAVE_ERROR}},
    {"vxsys_CameraPotsCommitValuesFromFile", {RC_FILE_LOAD_ERROR}},
    {"vxsys_CameraPotsGetNumberGroups", kPots},
    {"vxsys_CameraPotsGetGroupName", kPots},
    {"vxsys_CameraPotsGetNumberPotsInGroup", kPots},
    {"vxsys_CameraPotsGetPotInfo", kPots},
    {"vxsys_CameraPotsGetPotValue", kPots},
    {"vxsys_CameraPotsSetPotValue", kPots},
    {"vxsys_CameraPotsGetRailValue", kPots},
    {"vxsys_CameraPotsSetPotDefaultEnable", kPots},
    {"vxsys_CameraPotsGetPotDefaultEnable", kPots},
    {"vxsys_CameraPotsRegisterObserver", {}},
    {"vxsys_CameraPotsUnregisterObserver", {}},
    {"vxsys_EEPUP", {RC_NOT_SUPPORTED, RC_FEATURE_ERROR}},
    {"vxsys_EEPVR", {RC_NOT_SUPPORTED, RC_FEATURE_ERROR}},
    {"vxsys_EEPFL", {RC_FEATURE_ERROR}},
    {"vxsys_EEPLD", {RC_FEATURE_ERROR}},
    {"vxsys_EEPSV", {RC_FEATURE_ERROR}},
    {"LoadEEPROM", {RC_NOT_SUPPORTED, RC_FEATURE_ERROR}},
    {"vxsys_GetBaselineLevel", {RC_P1_INVALID}},
    {"StartAcquisition", {RC_FRAME_UNAVAILABLE, RC_START_REFUSED}},
    {"AbortAcquisition", {RC_IDLE, RC_FEATURE_ERROR}},
    {"WaitForAcquisition", {RC_NO_NEW_DATA}},
    {"WaitForAcquisitionTimeOut", {RC_NO_NEW_DATA}},
    {"WaitForAcquisitionByHandle", {RC_NO_NEW_DATA}},
    {"WaitForAcquisitionByHandleTimeOut", {RC_NO_NEW_DATA}},
    {"CancelWait", {}},
    {"GetStatus", {}},
    {"GetAcquisitionProgress", {}},
    {"GetSizeOfCircularBuffer", {}},
    {"SetMetaData", kAsTheCameraAnswers},
    {"vxsys_GetRawMetaDataInfo", {RC_NOT_SUPPORTED, RC_NOT_AVAILABLE, RC_FEATURE_ERROR}},
    {"GetAcquiredData8", kAcquired},
    {"GetAcquiredData16", kAcquired},
    {"GetAcquiredData", kAcquired},
    {"GetOldestImage8", kOldest},
    {"GetOldestImage16", kOldest},
    {"GetOldestImage", kOldest},
    {"GetMostRecentImage8", kMostRecent},
    {"GetMostRecentImage16", kMostRecent},
    {"GetMostRecentImage", kMostRecent},
    {"GetImages8", kRange},
    {"GetImages16", kRange},
    {"GetImages", kRange},
    {"GetNumberAvailableImages", {RC_P1_INVALID, RC_P2_INVALID, RC_NO_NEW_DATA}},
    {"GetTotalNumberImagesAcquired", {}},
};

} // namespace

bool IsDocumented(const std::string& name, unsigned int code)
{
  if (const auto row = kOfTheLibrary.find(name); row != kOfTheLibrary.end())
    return code == RC_SUCCESS || row->second.count(code) != 0;
  const auto row = kOfACamera.find(name);
  if (row == kOfACamera.end()) return false;
  return code == RC_SUCCESS || code == RC_NOT_INITIALIZED || row->second.count(code) != 0;
}

bool NeedsCamera(const std::string& name)
{
  return kOfACamera.count(name) != 0;
}
