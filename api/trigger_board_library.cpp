// SPDX-License-Identifier: MIT
// The one trigger-board library of the process.
#include "api/trigger_board_library.h"

#include "api/camera_registry.h"

#include <cstddef>
#include <memory>
#include <mutex>
#include <new>

TLoadUSBi2cDll* gblp_LoadUSBi2cDll = nullptr;

namespace {

// Held shared by calls into the library, alone by who loads or unloads it.
TNeverDestroyed<std::shared_mutex> libraryMutex;

// The object's place is never given up: programs may have kept the pointer to it. A library that is gone is followed
// by an object without one.
alignas(TLoadUSBi2cDll) std::byte place[sizeof(TLoadUSBi2cDll)];

template <class... TArguments>
void Replace(TArguments... arguments)
{
  if (gblp_LoadUSBi2cDll) std::destroy_at(gblp_LoadUSBi2cDll);
  gblp_LoadUSBi2cDll = new (place) TLoadUSBi2cDll(arguments...);
}

} // namespace

void LoadTriggerBoardLibrary()
{
  const std::unique_lock lock(libraryMutex.object);
  try {
    Replace();
  } catch (...) {
    gblp_LoadUSBi2cDll = new (place) TLoadUSBi2cDll(TLoadUSBi2cDll::TUnloaded{});
    throw;
  }
}

void UnloadTriggerBoardLibrary()
{
  if (IsForkedChild()) return;
  const std::unique_lock lock(libraryMutex.object);
  if (gblp_LoadUSBi2cDll) Replace(TLoadUSBi2cDll::TUnloaded{});
}

TTriggerBoardUse::TTriggerBoardUse() : lock_(libraryMutex.object), library_(gblp_LoadUSBi2cDll) {}
