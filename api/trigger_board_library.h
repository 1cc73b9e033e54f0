// SPDX-License-Identifier: MIT
// The one trigger-board library of the process.
#pragma once

#include "service/TLoadUSBi2cDll.h"
#include "vxmcd.h"

#include <atomic>

/// The loader of the trigger-board library: null until the first Initialize(), valid from then on, without a library
/// after the last ShutDown().
extern VXMCD_API TLoadUSBi2cDll* gblp_LoadUSBi2cDll;

/// Loads the library, or finds that there is none. For the first Initialize(); @p cameras, which counts its calls, is 0
/// when a ShutDown() came first.
void LoadTriggerBoardLibrary(const std::atomic<int>& cameras);
/// Unloads the library once no call is inside. For the last ShutDown(); @p cameras is not 0 when an Initialize() came
/// first.
void UnloadTriggerBoardLibrary(const std::atomic<int>& cameras);

/// Keeps the library loaded for the length of a scope. False before the first Initialize(). Any number of threads
/// use the library at a time, and one thread may use it again inside a use; uses that begin while the library is
/// to be unloaded wait until it is. There is no library for what it calls itself while it is loaded or unloaded, nor in
/// a forked child, where another thread's lock would never be released. Lives on the stack of one call.
class TTriggerBoardUse final
{
public:
  TTriggerBoardUse();
  ~TTriggerBoardUse();
  TTriggerBoardUse(const TTriggerBoardUse&) = delete;
  TTriggerBoardUse& operator=(const TTriggerBoardUse&) = delete;

  explicit operator bool() const { return library_ != nullptr; }
  const TLoadUSBi2cDll* operator->() const { return library_; }

private:
  const TLoadUSBi2cDll* library_ = nullptr;
  bool isCounted_ = false;
};
