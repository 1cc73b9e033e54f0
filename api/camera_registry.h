// SPDX-License-Identifier: MIT
// Which cameras are open, and which of them calls without a handle act on.
#pragma once

#include "api/TCamera.h"
#include "vxmcd.h"

#include <map>
#include <memory>

namespace QuorinUtility {
class TQuorinCriticalSection;
}

/// Storage for an object that outlives every thread of the process: constructed at load, never destroyed, so that
/// a program may end in the middle of a run.
template <class T>
union TNeverDestroyed
{
  TNeverDestroyed() : object() {}
  ~TNeverDestroyed() {}
  T object;
};

/// Handle of the first camera of the device list.
inline constexpr long kFirstCameraHandle = 101;

// The exported objects. Their names and layouts are part of the interface; nothing but the functions below changes
// them.
extern VXMCD_API long gblVxmcdCameraHandle;
extern VXMCD_API TNeverDestroyed<std::map<long, TCamera>> HandleToCameraMap;
extern VXMCD_API TCamera InvalidCamera;
extern VXMCD_API TNeverDestroyed<QuorinUtility::TQuorinCriticalSection> currentCameraShutdownMutex;

/// The record under the current handle, or InvalidCamera; never null. Borrowed until ShutDown().
TCamera* GetCurrentCamera();

/// The current handle.
long CurrentCameraHandle();
/// Makes @p handle the current one.
void SelectCamera(long handle);
/// Whether a camera is open under the current handle.
bool IsCurrentCameraOpen();
/// Enters a record under the current handle.
void RegisterCurrentCamera(const TCamera& camera);
/// Erases the record under the current handle.
void UnregisterCurrentCamera();

/// Counts the caller into the uses of the camera's acquisition manager, see TCameraUse, and writes where that is.
/// Null when no camera is open under @p handle or it is being closed.
TCamera* EnterCamera(long handle, TVxmcdAcquisitionManager*& manager);
/// Takes the acquisition manager out of the record, so that nobody new can enter the camera.
TVxmcdAcquisitionManager* CloseCameraToNewUses(TCamera& camera);

/// Whether this process is a child forked from one that had cameras open. The cameras belong to the parent: here
/// every look-up answers InvalidCamera.
bool IsForkedChild();
