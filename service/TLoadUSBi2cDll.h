// SPDX-License-Identifier: MIT
// The library that drives a trigger board.
#pragma once

#include "vxmcd_plugins.h"

#include <memory>

namespace QuorinUtility {
class TQuorinDynamicLoader;
class TQuorinFilePath;
} // namespace QuorinUtility

/// Loads the optional trigger-board library "usbi2c.dll" from the working directory and forwards calls to it.
/// There is one in the process, see api/trigger_board_library.h. The library is used only when it has all seven
/// functions. Not synchronised. Every call returns the library's answer, or kNotLoaded.
class TLoadUSBi2cDll final
{
public:
  static constexpr int kNotLoaded = 1;

  /// The object without a library: loads nothing.
  struct TUnloaded
  {
  };

  TLoadUSBi2cDll();
  explicit TLoadUSBi2cDll(TUnloaded);
  ~TLoadUSBi2cDll();
  TLoadUSBi2cDll(const TLoadUSBi2cDll&) = delete;
  TLoadUSBi2cDll& operator=(const TLoadUSBi2cDll&) = delete;

  /// Returns 0, whether or not there is a library.
  int dynamicLoadUSBi2c();
  /// Returns 0.
  int unloadUSBi2c();

  int CallTriggerBoard_GetAvailableTriggers(int* count) const;
  int CallTriggerBoard_GetTriggerHandle(int index, int* handle) const;
  int CallTriggerBoard_SetCurrentTrigger(int index) const;
  int CallTriggerBoard_Initialize() const;
  int CallTriggerBoard_I2CWrite(unsigned char first, unsigned char second, unsigned char third) const;
  int CallTriggerBoard_ShutDown() const;
  int CallTriggerBoard_ExternalTrigger(int trigger, unsigned long first, unsigned long second) const;

private:
  bool ResolveAll();
  template <class TFunction>
  bool Resolve(TFunction& function, const char* symbol);
  template <class TFunction, class... TArguments>
  int Forward(TFunction function, TArguments... arguments) const
  {
    return isLoaded_ ? function(arguments...) : kNotLoaded;
  }

  std::unique_ptr<QuorinUtility::TQuorinFilePath> libraryPath_;
  std::unique_ptr<QuorinUtility::TQuorinDynamicLoader> loader_;
  bool isLoaded_ = false;
  VxmcdTriggerBoardGetAvailableTriggers getAvailableTriggers_ = nullptr;
  VxmcdTriggerBoardGetTriggerHandle getTriggerHandle_ = nullptr;
  VxmcdTriggerBoardSetCurrentTrigger setCurrentTrigger_ = nullptr;
  VxmcdTriggerBoardInitialize initialize_ = nullptr;
  VxmcdTriggerBoardI2CWrite i2cWrite_ = nullptr;
  VxmcdTriggerBoardShutDown shutDown_ = nullptr;
  VxmcdTriggerBoardExternalTrigger externalTrigger_ = nullptr;
};
