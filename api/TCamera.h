// SPDX-License-Identifier: MIT
// The record of an open camera.
#pragma once

class IBool;
class IConfiguration;
class IEnum;
class IDispatchRoutine;
class IInt;
class SDK3Bool;
class SDK3Enum;
class SDK3Int;
class TAcquisitionEventHandler;
class TCameraPotsFacade;
class TConfigurationLoader;
class TDispatchQueue;
class TgetFIFOUsage;
class TI2c;
class TObserverList;
class TPixelReadoutRate;
class TPseudoAcquisitionMode;
class TPseudoADChannel;
class TPseudoAmplifier;
class TPseudoBaselineClamp;
class TPseudoHSSpeed;
class TVxmcdAcquisitionManager;
class IPreAmpGain;

namespace QuorinUtility {
class TQuorinCriticalSection;
}

/// Everything that was created for one open camera. A value of HandleToCameraMap; owns what its pointers
/// point to: Initialize() creates it, ShutDown() destroys it. The order of the fields is fixed. A field whose
/// object this camera does not have is null.
struct TCamera
{
  static constexpr unsigned int kNoCamera = 0xFFFFFFFFu;

  unsigned int cameraHandle = 0; ///< the feature library's handle; kNoCamera marks the record of no camera
  TVxmcdAcquisitionManager* acquisitionManager = nullptr;
  int retrievalCursor = 0; ///< number of the last image that GetOldestImage and its forms copied
  TI2c* i2c = nullptr;
  TCameraPotsFacade* cameraPots = nullptr;
  TObserverList* observers = nullptr;
  TConfigurationLoader* configurationLoader = nullptr;
  IConfiguration* configuration = nullptr; ///< of the configuration library; released through the loader
  SDK3Enum* preAmpGainChannel = nullptr;
  TPixelReadoutRate* pixelReadoutRate = nullptr;
  SDK3Enum* simplePreAmpGainControl = nullptr;
  SDK3Enum* preAmpGain = nullptr;
  SDK3Enum* preAmpGainSelector = nullptr;
  SDK3Enum* cycleMode = nullptr;
  SDK3Enum* pixelEncoding = nullptr;
  SDK3Enum* electronicShutteringMode = nullptr;
  TgetFIFOUsage* fifoUsage = nullptr;
  SDK3Int* accumulateCount = nullptr;
  SDK3Int* frameCount = nullptr;
  SDK3Bool* baselineClampFeature = nullptr;
  TPseudoADChannel* adChannel = nullptr;
  TPseudoHSSpeed* hsSpeed = nullptr;
  TPseudoAmplifier* amplifier = nullptr;
  IPreAmpGain* preAmpGainModel = nullptr;
  TPseudoAcquisitionMode* acquisitionMode = nullptr;
  TPseudoBaselineClamp* baselineClamp = nullptr;
  SDK3Enum* bitDepth = nullptr;
  bool eepromRead = false;
  TAcquisitionEventHandler* acquisitionEventHandler = nullptr;
  IDispatchRoutine* eventDispatchRoutine = nullptr;
  IDispatchRoutine* statusDispatchRoutine = nullptr;
  TDispatchQueue* eventDispatchQueue = nullptr;
  TDispatchQueue* statusDispatchQueue = nullptr;
  QuorinUtility::TQuorinCriticalSection* cameraLock = nullptr;
  bool usesLibrary = false;       ///< whether the feature library is to be finalised for this camera
  bool ownsConfiguration = false; ///< whether the configuration, which may be null, must still be returned
  TVxmcdAcquisitionManager* closedManager = nullptr; ///< the acquisition manager while the camera is being closed
  QuorinUtility::TQuorinCriticalSection* serviceLock = nullptr; ///< one service call at a time, see TServiceUse
  QuorinUtility::TQuorinCriticalSection* cursorLock = nullptr;  ///< guards retrievalCursor
};
