// SPDX-License-Identifier: MIT
// The one trigger-board library of the process.
#include "api/trigger_board_library.h"

#include "api/camera_registry.h"
#include "utility/TMutex.h"

#include <cstddef>
#include <memory>
#include <new>

TLoadUSBi2cDll* gblp_LoadUSBi2cDll = nullptr;

namespace {

// Locked shared by calls into the library, exclusively to load or unload it.
TNeverDestroyed<TSharedMutex> libraryMutex;

// Locked before libraryMutex. A call unlocks it at once; a load or unload keeps it locked, since otherwise overlapping
// calls would delay it without limit.
TNeverDestroyed<TMutex> turnMutex;

// A plug-in may call these functions again; such a call must not wait for its turn.
thread_local int usesOfThisThread = 0;

// Nor may calls of a plug-in that this thread is loading or unloading.
thread_local bool isReplacing = false;

struct TReplacing
{
  TReplacing() { isReplacing = true; }
  ~TReplacing() { isReplacing = false; }
};

// The object's memory is never freed, since programs may have stored the pointer to it. After an unload there is an
// object without a library.
alignas(TLoadUSBi2cDll) std::byte place[sizeof(TLoadUSBi2cDll)];

// The answers when the library cannot be used.
alignas(TLoadUSBi2cDll) std::byte placeOfNone[sizeof(TLoadUSBi2cDll)];
const TLoadUSBi2cDll* const noLibrary = new (placeOfNone) TLoadUSBi2cDll(TLoadUSBi2cDll::TUnloaded{});

template <class... TArguments>
void Replace(TArguments... arguments) REQUIRES(libraryMutex.object)
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
  const TLock turn(turnMutex.object);
  const TLock lock(libraryMutex.object);
  if (cameras > 0) Replace();
}

void UnloadTriggerBoardLibrary(const std::atomic<int>& cameras)
{
  if (IsForkedChild()) return;
  const TLock turn(turnMutex.object);
  const TLock lock(libraryMutex.object);
  if (gblp_LoadUSBi2cDll && cameras == 0) Replace(TLoadUSBi2cDll::TUnloaded{});
}

TTriggerBoardUse::TTriggerBoardUse()
{
  if (isReplacing || IsForkedChild()) {
    library_ = isReplacing || gblp_LoadUSBi2cDll ? noLibrary : nullptr;
    return;
  }
  isCounted_ = true;
  if (usesOfThisThread++ == 0) {
    const TLock turn(turnMutex.object);
    libraryMutex.object.LockShared();
  }
  library_ = gblp_LoadUSBi2cDll;
}

TTriggerBoardUse::~TTriggerBoardUse()
{
  if (isCounted_ && --usesOfThisThread == 0) libraryMutex.object.UnlockShared();
}
