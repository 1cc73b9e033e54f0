/* SPDX-License-Identifier: MIT */
/* Generated from api/fixed_results.def by scripts/generate-interface: do not edit. */
/* clang-format off */

/**
 * @file vxmcd_fixed_results.h
 * Functions that are kept by name, so that old programs link and run. They do nothing but return the code that is
 * stated with them, with or without an open camera, from any thread, without blocking; some write a fixed value first,
 * as stated with them.
 *
 * Where the arguments of a function are not known, any can be passed. A program whose own functions have these names
 * defines VXMCD_WITHOUT_FIXED_RESULTS before it includes vxmcd.h.
 */
#ifndef VXMCD_FIXED_RESULTS_H
#define VXMCD_FIXED_RESULTS_H

#ifndef VXMCD_H
#error "include vxmcd.h, which includes this file"
#endif

/* Any arguments: before C23 that is a declaration without a prototype. */
#if !defined(__cplusplus) && defined(__GNUC__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wstrict-prototypes"
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* RC_SUCCESS: no colour sensor. */
VXMCD_API unsigned int DemosaicImage(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int GetCYMGShift(VXMCD_ANY_ARGUMENTS);
VXMCD_DECORATED unsigned int GetMostRecentColorImage16(unsigned long, int, unsigned short*, unsigned short*, unsigned short*);
VXMCD_API unsigned int WhiteBalance(VXMCD_ANY_ARGUMENTS);

/* RC_SUCCESS: spectrographs, filters and stages are devices of their own. */
VXMCD_API unsigned int GetAperture(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int GetApertureLabel(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int GetCurrentWaveSteps(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int GetGrating(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int GetGratingInfo(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int GetNumberApertures(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int GetNumberGratings(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int GetOpticalParams(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int GetResetParameters(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int GetWavelength(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int GetWavelengthLimits(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int I2CRampStepperMove(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int I2CRampStepperMoveEx(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int I2CStepperMove(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int IsMoving(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int Park(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int ReadShutter(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int ReadSpectConfig(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int ResetAperture(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int ResetGrating(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int ResetWavelength(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int SetAperture(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int SetCurrentWaveSteps(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int SetGrating(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int SetWavelength(VXMCD_ANY_ARGUMENTS);

/* RC_SUCCESS: no image intensifier, no delay generator. */
VXMCD_API unsigned int GetAdjustedRingExposureTimes(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int GetDDGExternalOutputEnabled(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int GetDDGExternalOutputPolarity(VXMCD_ANY_ARGUMENTS);
/** Writes 32-bit 0 through the second argument, floating-point numbers not counted; null is skipped. */
VXMCD_API unsigned int GetDDGExternalOutputStepEnabled(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int GetDDGExternalOutputTime(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int GetDDGInsertionDelay(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int GetDDGIOC(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int GetDDGIOCFrequency(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int GetDDGIOCNumber(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int GetDDGKeengate(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int GetDDGPulse(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int GetDDGSlimControlByte(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int GetDDGSlimGlobalControlByte(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int GetDDGSlimInitialDelay(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int GetDDGSlimInterPulseDelay(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int GetDDGSlimPulsesPerExposure(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int GetDDGSlimPulseWidth(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int GetDDGStepCoefficients(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int GetDDGStepMode(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int GetGateMode(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int GetMaximumNumberRingExposureTimes(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int GetMCPGain(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int GetMCPGainRange(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int GetMCPGainTable(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int GetMCPVoltage(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int GetNumberRingExposureTimes(VXMCD_ANY_ARGUMENTS);
/** Writes 32-bit 1 through the first argument; null is skipped. */
VXMCD_API unsigned int GetPhosphorStatus(void* first);
VXMCD_API unsigned int GetRingExposureRange(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int GPIBReceive(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int GPIBSend(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int SetDDGAddress(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int SetDDGExternalOutputEnabled(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int SetDDGExternalOutputPolarity(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int SetDDGExternalOutputStepEnabled(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int SetDDGExternalOutputTime(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int SetDDGGain(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int SetDDGGateStep(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int SetDDGGateTime(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int SetDDGInsertionDelay(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int SetDDGIOC(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int SetDDGIOCFrequency(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int SetDDGIOCNumber(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int SetDDGIOCPeriod(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int SetDDGKeengate(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int SetDDGSlimControlByte(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int SetDDGSlimGlobalControlByte(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int SetDDGSlimInitialDelay(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int SetDDGSlimInterPulseDelay(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int SetDDGSlimPulsesPerExposure(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int SetDDGSlimPulseWidth(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int SetDDGStepCoefficients(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int SetDDGStepMode(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int SetDDGTimes(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int SetDDGTriggerMode(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int SetDDGVariableGateStep(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int SetDelayGenerator(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int SetGate(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int SetGateMode(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int SetMCPGain(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int SetMCPGating(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int SetRingExposureTimes(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int vxsys_WriteDDGCommands(VXMCD_ANY_ARGUMENTS);

/* RC_NOT_SUPPORTED: no image intensifier, no delay generator. */
/** Writes 64-bit 0 through the first and the second argument; null is skipped. */
VXMCD_API unsigned int GetDDGGateTime(void* first, void* second);
/** Writes 32-bit 0 through the first argument; null is skipped. */
VXMCD_API unsigned int GetDDGIOCNumberRequested(void* first);
/** Writes 64-bit 0 through the first argument; null is skipped. */
VXMCD_API unsigned int GetDDGIOCPeriod(void* first);
/** Writes 32-bit 0 through the first argument; null is skipped. */
VXMCD_API unsigned int GetDDGIOCPulses(void* first);
/** Writes 32-bit 0 through the first argument; null is skipped. */
VXMCD_API unsigned int GetDDGIOCTrigger(void* first);
/** Writes 32-bit 0 through the first argument; null is skipped. */
VXMCD_API unsigned int GetDDGOpticalWidthEnabled(void* first);
/** Writes 64-bit 0 through the second argument, floating-point numbers not counted; null is skipped. */
VXMCD_API unsigned int GetDDGTTLGateWidth(VXMCD_ANY_ARGUMENTS);
/** Writes 32-bit 0 through the first argument; null is skipped. */
VXMCD_API unsigned int GetNumberDDGExternalOutputs(void* first);
VXMCD_API unsigned int SetDDGIOCTrigger(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int SetDDGOpticalWidthEnabled(VXMCD_ANY_ARGUMENTS);
VXMCD_DECORATED unsigned int SetPhosphorEvent(void*);
VXMCD_API unsigned int vxsys_CheckIOCTimings(VXMCD_ANY_ARGUMENTS);

/* RC_SUCCESS: no electron-multiplying gain; gains are chosen with SetPreAmpGain(). */
VXMCD_API unsigned int GetEMAdvanced(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int GetEMCCDGain(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int GetEMGainMode(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int GetEMGainRange(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int SetEMAdvanced(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int SetEMCCDGain(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int SetEMClockCompensation(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int SetEMGainMode(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int SetGain(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int SetHighCapacity(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int vxsys_GetEnableAutoHighCapacityGain(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int vxsys_GetMaxGain(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int vxsys_SetEnableAutoHighCapacityGain(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int vxsys_SetMaxGain(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int vxsys_SetSoftwareEMGainControl(VXMCD_ANY_ARGUMENTS);

/* RC_SUCCESS: no charge is shifted; read-out speeds are chosen with SetHSSpeed(). */
VXMCD_API unsigned int EnableKeepCleans(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int GetFastestRecommendedVSSpeed(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int GetFKExposureTime(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int GetFKVShiftSpeed(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int GetFKVShiftSpeedF(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int GetHorizontalSpeed(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int GetHVflag(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int GetKeepCleanTime(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int GetMinimumImageLength(VXMCD_ANY_ARGUMENTS);
/** Writes 32-bit 0 through the first argument; null is skipped. */
VXMCD_API unsigned int GetNumberFKVShiftSpeeds(void* first);
VXMCD_API unsigned int GetNumberHorizontalSpeeds(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int GetNumberVerticalSpeeds(VXMCD_ANY_ARGUMENTS);
/** Writes 32-bit 0 through the first argument; null is skipped. */
VXMCD_API unsigned int GetNumberVSAmplitudes(void* first);
/** Writes 32-bit 0 through the first argument; null is skipped. */
VXMCD_API unsigned int GetNumberVSSpeeds(void* first);
VXMCD_API unsigned int GetVerticalSpeed(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int GetVSSpeed(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int SetCameraVoltages(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int SetChargeShifting(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int SetFastKinetics(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int SetFastKineticsEx(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int SetFKVShiftSpeed(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int SetFVBHBin(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int SetHorizontalSpeed(VXMCD_ANY_ARGUMENTS);
VXMCD_DECORATED unsigned int SetStorageMode(long);
VXMCD_API unsigned int SetVerticalRowBuffer(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int SetVerticalSpeed(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int SetVirtualChip(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int SetVSAmplitude(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int SetVSSpeed(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int vxsys_DisableI2CWritingToVertClockVoltAmp(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int vxsys_GetFTStorageRows(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int vxsys_GetVirtualChipFVBBottom(VXMCD_ANY_ARGUMENTS);

/* RC_NOT_SUPPORTED: no charge is shifted; read-out speeds are chosen with SetHSSpeed(). */
VXMCD_API unsigned int GetVSAmplitudeFromString(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int GetVSAmplitudeString(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int GetVSAmplitudeValue(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int vxsys_GetCCDVoltageInstance(VXMCD_ANY_ARGUMENTS);

/* RC_SUCCESS: layouts are the image (SetImage()) and tracks (SetRandomTracks()). */
VXMCD_API unsigned int SetComplexImage(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int SetCropMode(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int SetCustomTrackHBin(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int SetFullImage(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int SetIsolatedCropMode(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int SetMultiTrack(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int SetMultiTrackHBin(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int SetMultiTrackHRange(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int SetMultiTrackScan(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int SetNumberPrescans(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int SetPixelMode(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int SetSingleTrack(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int SetSingleTrackHBin(VXMCD_ANY_ARGUMENTS);
VXMCD_DECORATED unsigned int SetUSGenomics(long, long);
VXMCD_API unsigned int vxsys_SetDummyPixels(VXMCD_ANY_ARGUMENTS);

/* RC_NOT_SUPPORTED: layouts are the image (SetImage()) and tracks (SetRandomTracks()). */
VXMCD_API unsigned int SetReadoutRegisterPacking(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int vxsys_SetSoftwareBin(VXMCD_ANY_ARGUMENTS);

/* RC_SUCCESS: no mechanical shutter. */
/** Writes 32-bit 0 through the first and the second argument; null is skipped. */
VXMCD_API unsigned int GetShutterMinTimes(void* first, void* second);
/** Writes 32-bit 0 through the first argument; null is skipped. */
VXMCD_API unsigned int IsInternalMechanicalShutter(void* first);
VXMCD_API unsigned int SetShutter(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int SetShutterEx(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int SetShutters(VXMCD_ANY_ARGUMENTS);

/* RC_SUCCESS: triggers are chosen with SetTriggerMode(). */
VXMCD_API unsigned int GetExternalTriggerTermination(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int GetTriggerLevelRange(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int IsTriggerModeAvailable(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int SetAdvancedTriggerModeState(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int SetCurrentTriggerIndex(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int SetExternalTriggerTermination(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int SetFastExtTrigger(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int SetTriggerInvert(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int SetTriggerLevel(VXMCD_ANY_ARGUMENTS);
VXMCD_DECORATED unsigned int SetTriggerTermination(int);
VXMCD_API unsigned int TriggerBoard_ForceExtTrigger(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int TriggerBoard_GetAllTriggersFired(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int TriggerBoard_GetCurrentTrigger(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int TriggerBoard_GetNumberTriggersFired(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int TriggerBoard_GetSerialNumber(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int TriggerBoard_SetSerialNumber(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int TriggerBoard_VendorRequest(VXMCD_ANY_ARGUMENTS);

/* RC_NOT_SUPPORTED: no such events; see WaitForAcquisition() and GetStatus(). */
VXMCD_API unsigned int GetCameraEventStatus(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int GetFrontEndStatus(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int GetTECStatus(VXMCD_ANY_ARGUMENTS);
VXMCD_DECORATED unsigned int SetAcqStatusEvent(void*);
VXMCD_DECORATED unsigned int SetCameraStatusEnable(unsigned int);
VXMCD_DECORATED unsigned int SetFrontEndEvent(void*);
VXMCD_DECORATED unsigned int SetTECEvent(void*);

/* RC_SUCCESS: no such events; see WaitForAcquisition() and GetStatus(). */
VXMCD_API unsigned int SetMessageWindow(VXMCD_ANY_ARGUMENTS);
VXMCD_DECORATED unsigned int SetSaturationEvent(void*);
VXMCD_DECORATED unsigned int SetUserEvent(void*);
VXMCD_API unsigned int vxsys_SetPollEndOfExposure(VXMCD_ANY_ARGUMENTS);

/* RC_SUCCESS: images are taken with GetAcquiredData(), GetOldestImage(), GetMostRecentImage(), GetImages(). */
VXMCD_DECORATED unsigned int GetAcquiredFloatData(float*, unsigned long);
VXMCD_API unsigned int GetImageFlip(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int GetImageRotate(VXMCD_ANY_ARGUMENTS);
VXMCD_DECORATED unsigned int GetNewData(int*, unsigned long);
VXMCD_DECORATED unsigned int GetNewData16(unsigned short*, unsigned long);
VXMCD_DECORATED unsigned int GetNewData8(unsigned char*, unsigned long);
VXMCD_DECORATED unsigned int GetNewFloatData(float*, unsigned long);
VXMCD_DECORATED unsigned int GetNumberNewImages(long*, long*);
VXMCD_DECORATED unsigned int GetSpoolProgress(long*);
VXMCD_DECORATED unsigned int Merge(int const*, long, long, long, float*, long, long, int*, float*, float*);
VXMCD_API unsigned int PrepareAcquisition(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int SetAcquisitionType(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int SetDataType(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int SetImageFlip(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int SetImageRotate(VXMCD_ANY_ARGUMENTS);
VXMCD_DECORATED unsigned int SetNextAddress(int*, long, long, long, long);
VXMCD_DECORATED unsigned int SetNextAddress16(int*, long, long, long, long);

/* RC_NOT_SUPPORTED: times are those of GetAcquisitionTimings() and vxsys_GetRawMetaDataInfo(). */
VXMCD_API unsigned int GetDualExposureTimes(VXMCD_ANY_ARGUMENTS);
VXMCD_DECORATED unsigned int GetMetaDataInfo(void**, float*, unsigned int);
VXMCD_API unsigned int SetDualExposureMode(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int SetDualExposureTimes(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int vxsys_GetMetaDataVersion(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int vxsys_ValidateNumberKinetics(VXMCD_ANY_ARGUMENTS);

/* RC_SUCCESS: times are those of GetAcquisitionTimings() and vxsys_GetRawMetaDataInfo(). */
/** Writes 32-bit 1 through the first argument; null is skipped. */
VXMCD_API unsigned int GetMinimumNumberInSeries(void* first);
VXMCD_DECORATED unsigned int GetMSTimingsData(void**, float*, int);
VXMCD_DECORATED unsigned int GetMSTimingsEnabled(void);
VXMCD_API unsigned int vxsys_GetMinimumExposureTime(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int vxsys_SetMetaData(VXMCD_ANY_ARGUMENTS);

/* RC_NOT_AVAILABLE: times are those of GetAcquisitionTimings() and vxsys_GetRawMetaDataInfo(). */
VXMCD_API unsigned int GetStartUpTime(VXMCD_ANY_ARGUMENTS);

/* RC_NOT_SUPPORTED: images are delivered as the camera took them. */
VXMCD_API unsigned int Filter_GetAveragingFactor(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int Filter_GetAveragingFrameCount(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int Filter_GetDataAveragingMode(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int Filter_GetMode(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int Filter_GetThreshold(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int Filter_SetAveragingFactor(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int Filter_SetAveragingFrameCount(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int Filter_SetDataAveragingMode(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int Filter_SetMode(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int Filter_SetThreshold(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int IsCountConvertModeAvailable(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int PostProcessCountConvert(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int PostProcessDataAveraging(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int PostProcessNoiseFilter(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int PostProcessPhotonCounting(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int vxsys_GetCountConvertInstance(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int vxsys_GetDefectCorrection(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int vxsys_GetNoiseFilterInstance(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int vxsys_SetChosenFilter(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int vxsys_SetDefectCorrection(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int vxsys_SetFrameCount(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int vxsys_SetNoiseThreshold(VXMCD_ANY_ARGUMENTS);

/* RC_SUCCESS: images are delivered as the camera took them. */
VXMCD_DECORATED unsigned int GetBackground(int*, unsigned long);
VXMCD_API unsigned int GetCountConvertWavelengthRange(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int GetFilterMode(VXMCD_ANY_ARGUMENTS);
/** Writes 32-bit 0 through the first argument; null is skipped. */
VXMCD_API unsigned int GetNumberPhotonCountingDivisions(void* first);
VXMCD_DECORATED unsigned int SetBackground(int*, unsigned long);
VXMCD_API unsigned int SetBaselineOffset(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int SetCountConvertMode(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int SetCountConvertWavelength(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int SetFilterMode(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int SetFilterParameters(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int SetPhotonCounting(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int SetPhotonCountingDivisions(VXMCD_ANY_ARGUMENTS);
VXMCD_DECORATED unsigned int SetPhotonCountingThreshold(long, long);
/** The function that C++ programs linked to as `vxsys_SetChosenFilter(int)`; its namesake of C answers otherwise.
 *  Returns #RC_SUCCESS. */
VXMCD_API unsigned int vxsys_SetChosenFilterDecorated(int) __asm__("_Z21vxsys_SetChosenFilteri");
/** The function that C++ programs linked to as `vxsys_SetFrameCount(int)`; its namesake of C answers otherwise.
 *  Returns #RC_SUCCESS. */
VXMCD_API unsigned int vxsys_SetFrameCountDecorated(int) __asm__("_Z19vxsys_SetFrameCounti");
/** The function that C++ programs linked to as `vxsys_SetNoiseThreshold(float)`; its namesake of C answers otherwise.
 *  Returns #RC_SUCCESS. */
VXMCD_API unsigned int vxsys_SetNoiseThresholdDecorated(float) __asm__("_Z23vxsys_SetNoiseThresholdf");

/* RC_SUCCESS: programs read and write their own files. */
VXMCD_API unsigned int ReadFloat(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int ReadInt(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int ReadString(VXMCD_ANY_ARGUMENTS);
VXMCD_DECORATED unsigned int SaveAsBmp(char*, char*, long, long);
VXMCD_API unsigned int SaveAsCommentedVrx(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int SaveAsEDF(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int SaveAsFITS(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int SaveAsRaw(VXMCD_ANY_ARGUMENTS);
VXMCD_DECORATED unsigned int SaveAsSPC(char*);
VXMCD_API unsigned int SaveAsTiff(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int SaveAsTiffEx(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int SaveAsVrx(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int SaveToClipBoard(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int SetVrxComment(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int WriteFloat(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int WriteInt(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int WriteString(VXMCD_ANY_ARGUMENTS);

/* RC_SUCCESS: cameras are found with GetAvailableCameras() and described by GetCapabilities(). */
VXMCD_DECORATED unsigned int GetCameraInformation(int, long*);
VXMCD_API unsigned int GetID(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int GetNumberDevices(VXMCD_ANY_ARGUMENTS);
/** Writes 32-bit 0 through the third argument, floating-point numbers not counted; null is skipped. */
VXMCD_API unsigned int GetQE(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int GetQXCameraInfo(VXMCD_ANY_ARGUMENTS);
/** Writes 32-bit 0 through the fifth argument, floating-point numbers not counted; null is skipped. */
VXMCD_API unsigned int GetSensitivity(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int GetVRMStructureVersion(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int IdQuorinDll(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int InitializeDevice(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int SelectDevice(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int vxsys_IsBrekAvailable(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int vxsys_IsInitialised(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int vxsys_SetAppVersion(VXMCD_ANY_ARGUMENTS);

/* RC_SUCCESS: no controller card and no driver of our own. */
VXMCD_DECORATED unsigned int GetAllDMAData(int*, unsigned long);
VXMCD_DECORATED unsigned int GetImagesPerDMA(unsigned long*);
VXMCD_API unsigned int GetIRQ(VXMCD_ANY_ARGUMENTS);
VXMCD_DECORATED unsigned int GetPhysicalDMAAddress(unsigned long*, unsigned long*);
VXMCD_API unsigned int GetRegisterDump(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int GetSlotBusDeviceFunction(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int GetVirtualDMAAddress(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int LoadUSBFPGA(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int SetDMAParameters(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int SetFPDP(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int SetPCIMode(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int SetRegisterDump(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int UnMapPhysicalAddress(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int vxsys_GetDriverVersion(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int vxsys_GetFirmwareDetails(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int vxsys_GetFPGAVersion(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int vxsys_GetRegisterSize(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int vxsys_Inport(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int vxsys_Inportb(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int vxsys_IsDeprecatedUSBDriver(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int vxsys_LoadUSBFirmware(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int vxsys_Outport(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int vxsys_Outportb(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int vxsys_QUORINVENDORREQUEST(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int vxsys_SetRegisterBits(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int vxsys_SetRegisterSize(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int vxsys_USBLoadRPDFile(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int vxsys_VerifyRPDFile(VXMCD_ANY_ARGUMENTS);

/* RC_NOT_SUPPORTED: no controller card and no driver of our own. */
VXMCD_API unsigned int SetCameraLinkMode(VXMCD_ANY_ARGUMENTS);

/* RC_SUCCESS: no input and output lines. */
VXMCD_API unsigned int GetIODirection(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int GetIOLevel(VXMCD_ANY_ARGUMENTS);
/** Writes 32-bit 0 through the first argument; null is skipped. */
VXMCD_API unsigned int GetNumberIO(void* first);
VXMCD_API unsigned int InAuxPort(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int OutAuxPort(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int SetDACOutput(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int SetDACOutputScale(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int SetIODirection(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int SetIOLevel(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int vxsys_OutAuxPort(VXMCD_ANY_ARGUMENTS);

/* RC_SUCCESS: no 1-Wire bus. */
VXMCD_API unsigned int OWGetDeviceID(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int OWGetNbDevices(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int OWInit(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int OWLockMemPageRegister(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int OWPulsePIO(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int OWReadMem(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int OWReadPIO(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int OWReadPIORegister(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int OWResetPIOActivityLatch(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int OWSetMemPageRegister(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int OWSetPIO(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int OWSetTransmissionMode(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int OWWriteMem(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int OWWritePIORegister(VXMCD_ANY_ARGUMENTS);

/* RC_SUCCESS: the cooling has no further settings. */
VXMCD_API unsigned int SetCoolerMode(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int SetTemperatureOffsetDAC(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int vxsys_AutoCoolingConfig(VXMCD_ANY_ARGUMENTS);

/* RC_NOT_SUPPORTED: the cooling has no further settings. */
VXMCD_API unsigned int vxsys_SupportsTemperatureDecimal(VXMCD_ANY_ARGUMENTS);

/* RC_SUCCESS: the internal bus is the library's own; I2CBurstRead() and I2CBurstWrite() reach the controller bus. */
VXMCD_API unsigned int I2CRead(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int I2CReset(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int I2CWrite(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int vxsys_EnableExternalI2CBus(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int vxsys_InternalI2CBurstRead(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int vxsys_InternalI2CBurstWrite(VXMCD_ANY_ARGUMENTS);

/* RC_NOT_SUPPORTED: the internal bus is the library's own; I2CBurstRead() and I2CBurstWrite() reach the controller bus. */
VXMCD_API unsigned int vxsys_ToggleExtI2C(VXMCD_ANY_ARGUMENTS);

/* RC_SUCCESS: the memory in a camera is not read or written by address. */
VXMCD_API unsigned int SaveEEPROMToFile(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int vxsys_EEPPR(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int vxsys_EEPRD(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int vxsys_GDF(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int vxsys_GetEEPROMID(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int vxsys_GetUSBEEPROMStatus(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int vxsys_GIRFD(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int vxsys_GIRFI(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int vxsys_GRFD(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int vxsys_GRFI(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int vxsys_GRFIMinMax(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int vxsys_KORALEEPFL(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int vxsys_KORALEEPLD(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int vxsys_KORALEEPRD(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int vxsys_KORALEEPSV(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int vxsys_KORALEEPUP(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int vxsys_KORALEEPVR(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int vxsys_KORALEEPWR(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int vxsys_NvramRead(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int vxsys_NvramWrite(VXMCD_ANY_ARGUMENTS);

/* RC_P1_INVALID: the memory in a camera is not read or written by address. */
VXMCD_API unsigned int vxsys_EEPWR(VXMCD_ANY_ARGUMENTS);

/* RC_SUCCESS: adjustments of other cameras. */
VXMCD_API unsigned int vxsys_AdjustBinPAGOffset(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int vxsys_AdjustCDSSamples(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int vxsys_AdjustDigitalBinPAGOffset(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int vxsys_AdjustDigitalPAGOffset(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int vxsys_AdjustoLuxCDSSamples(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int vxsys_AdjustoLuxPAGDivider(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int vxsys_AdjustoLuxPAGOffset(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int vxsys_AdjustPAGDivider(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int vxsys_AdjustPAGOffset(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int vxsys_ChannelSpeeds(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int vxsys_GetChannelName(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int vxsys_GetMasterFile(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int vxsys_GetNumberVerniers(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int vxsys_GetPatternFile(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int vxsys_GetTotalNumberVerniers(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int vxsys_SavePetrelDefaultPots(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int vxsys_SetPetrelAmplifier(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int vxsys_SetPetrelCDSSamples(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int vxsys_SetPetrelFilter(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int vxsys_SetPetrelGainDAC(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int vxsys_SetPetrelReferenceOffset(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int vxsys_SetPetrelRegisterBits(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int vxsys_SetupPetrelDefaultPots(VXMCD_ANY_ARGUMENTS);

/* RC_NOT_SUPPORTED: adjustments of other cameras. */
VXMCD_API unsigned int vxsys_GetADCMuxStatus(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int vxsys_MapToAcqDataSpeedIndex(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int vxsys_MapToChannelSpeedIndex(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int vxsys_PrepareKoral(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int vxsys_SetADCMuxStatus(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int vxsys_WriteADCMuxSelectToFPGA(VXMCD_ANY_ARGUMENTS);

/* RC_SUCCESS: no test patterns. */
VXMCD_API unsigned int vxsys_GetNumberTestPatterns(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int vxsys_GetTestPattern(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int vxsys_GetTestPatternName(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int vxsys_GetTestPatternPhotonCounting(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int vxsys_GetTestPatternPhotonCountingRange(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int vxsys_ResetTestPattern(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int vxsys_SetTestPattern(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int vxsys_SetTestPatternPhotonCounting(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int vxsys_SetTestPatternPhotonCountingRange(VXMCD_ANY_ARGUMENTS);

/* RC_SUCCESS: diagnostics are switched with the environment variable VXMCD_LOG. */
VXMCD_API unsigned int vxsys_FunctionTimeDebugClearList(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int vxsys_FunctionTimeDebugOutputTable(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int vxsys_GetDebugFunctionLevelEnabled(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int vxsys_GetDebugLevelEnabled(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int vxsys_GetDebugOutputLocation(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int vxsys_SetDebugFunctionLevelEnabled(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int vxsys_SetDebugLevelEnabled(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int vxsys_SetDebugOutputCallback(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int vxsys_SetDebugOutputLocation(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int vxsys_StartFunctionTimeDebugging(VXMCD_ANY_ARGUMENTS);
VXMCD_API unsigned int vxsys_StopFunctionTimeDebugging(VXMCD_ANY_ARGUMENTS);

#ifdef __cplusplus
}
#endif

#if !defined(__cplusplus) && defined(__GNUC__)
#pragma GCC diagnostic pop
#endif

#endif
