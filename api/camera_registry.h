// SPDX-License-Identifier: MIT
// The open cameras, and the one that calls without a handle act on.
#pragma once

#include "api/TCamera.h"
#include "features/current_core_handle.h"
#include "utility/TNeverDestroyed.h"
#include "vxmcd.h"

#include <map>
#include <memory>
#include <optional>

namespace QuorinUtility {
class TQuorinCriticalSection;
}

// The exported objects. Their names and layouts are part of the interface; only the functions below change
// them. The current handle is another one: see features/current_core_handle.h.
extern VXMCD_API TNeverDestroyed<std::map<long, TCamera>> HandleToCameraMap;
extern VXMCD_API TCamera InvalidCamera;
extern VXMCD_API TNeverDestroyed<QuorinUtility::TQuorinCriticalSection> currentCameraShutdownMutex;

/// The record under the current handle, or InvalidCamera; never null. Borrowed until ShutDown().
TCamera* GetCurrentCamera();

/// Makes @p handle the current one: of the calling thread if it has one for itself, else of the process.
void SelectCamera(long handle);
/// Whether a camera is open under @p handle.
bool IsCameraOpen(long handle);
/// Enters a record under @p handle.
void RegisterCamera(long handle, const TCamera& camera);
/// Erases the record under @p handle.
void UnregisterCamera(long handle);

/// Counts the caller into the uses of the camera's acquisition manager, see TCameraUse, and writes its address.
/// Null when no camera is open under @p handle or it is being closed.
TCamera* EnterCamera(long handle, TVxmcdAcquisitionManager*& manager);
/// The lock of TClosingTurn; null when no camera was ever open under @p handle.
QuorinUtility::TQuorinCriticalSection* ClosingLock(long handle);
/// The handle of another camera than @p camera that acquires with frames of the current camera, if there is one.
std::optional<long> FindOtherRun(const TCamera& camera);
/// Removes the acquisition manager from the record, so that no new use of the camera can begin.
TVxmcdAcquisitionManager* CloseCameraToNewUses(TCamera& camera);

/// Whether this process is a child forked from one that had cameras open. The cameras belong to the parent: in
/// the child every look-up returns InvalidCamera.
bool IsForkedChild();
