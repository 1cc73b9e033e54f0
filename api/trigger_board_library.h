// SPDX-License-Identifier: MIT
// The one trigger-board library of the process.
#pragma once

#include "service/TLoadUSBi2cDll.h"
#include "vxmcd.h"

#include <shared_mutex>

/// The loader of the trigger-board library: null until the first Initialize(), and from then on always a living
/// object, which has no library after the last ShutDown().
extern VXMCD_API TLoadUSBi2cDll* gblp_LoadUSBi2cDll;

/// Loads the library, or finds that there is none. For the first Initialize().
void LoadTriggerBoardLibrary();
/// Unloads the library once no call is inside. For the last ShutDown().
void UnloadTriggerBoardLibrary();

/// Keeps the library loaded for the length of a scope. False before the first Initialize().
class TTriggerBoardUse final
{
public:
  TTriggerBoardUse();

  explicit operator bool() const { return library_ != nullptr; }
  const TLoadUSBi2cDll* operator->() const { return library_; }

private:
  std::shared_lock<std::shared_mutex> lock_;
  const TLoadUSBi2cDll* library_;
};
