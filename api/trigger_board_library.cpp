// SPDX-License-Identifier: MIT
// The one trigger-board library of the process.
#include "api/trigger_board_library.h"

#include "api/camera_registry.h"

#include <cstddef>
#include <memory>
#include <mutex>
#include <new>
#include <shared_mutex>

TLoadUSBi2cDll* gblp_LoadUSBi2cDll = nullptr;

namespace {

// Locked shared by calls into the library, alone by who loads or unloads it.
TNeverDestroyed<std::shared_mutex> libraryMutex;

// Locked before libraryMutex; calls unlock it at once, who loads or unloads keeps it. Without it, calls that overlap
// one another without a pause would keep who loads or unloads waiting without limit.
TNeverDestroyed<std::mutex> turnMutex;

// A plug-in may call these functions again; that must not wait for its turn.
thread_local int usesOfThisThread = 0;

// Nor must what a plug-in does while this thread loads or unloads it.
thread_local bool isReplacing = false;

struct TReplacing
{
  TReplacing() { isReplacing = true; }
  ~TReplacing() { isReplacing = false; }
};

// The object's place is never given up: programs may have kept the pointer to it. A library that is gone is
// followed by an object without one.
alignas(TLoadUSBi2cDll) std::byte place[sizeof(TLoadUSBi2cDll)];

// Answers where the library cannot be used.
alignas(TLoadUSBi2cDll) std::byte placeOfNone[sizeof(TLoadUSBi2cDll)];
const TLoadUSBi2cDll* const noLibrary = new (placeOfNone) TLoadUSBi2cDll(TLoadUSBi2cDll::TUnloaded{});

template <class... TArguments>
void Replace(TArguments... arguments)
{
  const TReplacing replacing;
  if (gblp_LoadUSBi2cDll) std::destroy_at(gblp_LoadUSBi2cDll);
  try {
    gblp_LoadUSBi2cDll = new (place) TLoadUSBi2cDll(arguments...);
  } catch (...) {
    gblp_LoadUSBi2cDll = new (place) TLoadUSBi2cDll(TLoadUSBi2cDll::TUnloaded{});
    throw;
  }
}

} // namespace

void LoadTriggerBoardLibrary(const std::atomic<int>& cameras)
{
  const std::lock_guard turn(turnMutex.object);
  const std::unique_lock lock(libraryMutex.object);
  if (cameras > 0) Replace();
}

void UnloadTriggerBoardLibrary(const std::atomic<int>& cameras)
{
  if (IsForkedChild()) return;
  const std::lock_guard turn(turnMutex.object);
  const std::unique_lock lock(libraryMutex.object);
  if (gblp_LoadUSBi2cDll && cameras == 0) Replace(TLoadUSBi2cDll::TUnloaded{});
}

TTriggerBoardUse::TTriggerBoardUse()
{
  if (isReplacing || IsForkedChild()) {
    library_ = isReplacing || gblp_LoadUSBi2cDll ? noLibrary : nullptr;
    return;
  }
  holdsLibrary_ = true;
  if (usesOfThisThread++ == 0) {
    const std::lock_guard turn(turnMutex.object);
    libraryMutex.object.lock_shared();
  }
  library_ = gblp_LoadUSBi2cDll;
}

TTriggerBoardUse::~TTriggerBoardUse()
{
  if (holdsLibrary_ && --usesOfThisThread == 0) libraryMutex.object.unlock_shared();
}
