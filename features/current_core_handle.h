// SPDX-License-Identifier: MIT
// Which camera is current, and which device of the feature library that is: written by the registry, read by
// the layers below it.
#pragma once

#include "vxmcd.h"

/// A core handle that addresses no device.
inline constexpr int kNoCoreHandle = -1;

/// Handle of the first camera of the device list.
inline constexpr long kFirstCameraHandle = 101;

/// What CameraOfThread() is for threads that have none.
inline constexpr long kNoCameraOfThread = 0;

/// The current handle of the process. Exported for programs linked to it; writing it selects a camera as SelectCamera()
/// does.
extern VXMCD_API long gblVxmcdCameraHandle;

/// The current handle: that of the calling thread if it has one, else that of the process.
long CurrentCameraHandle() noexcept;

/// The current handle that the calling thread has for itself, which counts before that of the process.
long CameraOfThread() noexcept;
void SetCameraOfThread(long handle) noexcept;

/// The core handle of the current camera, kNoCoreHandle while it is not open. Any thread; does not block, except
/// while the current handle is the thread's or one that a program wrote directly. The acquisition thread calls it for
/// every frame, so it does not look into the registry.
int CurrentCoreHandle() noexcept;

/// Makes @p handle the current one of the process.
void PublishCurrentCamera(long handle);

/// Sets the device of the camera @p handle; kNoCoreHandle when it is closed.
void PublishCoreHandle(long handle, int coreHandle);

/// Closes every camera for good, without a lock: for the child of a fork.
void ForgetCoreHandles() noexcept;
