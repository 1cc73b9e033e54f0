// SPDX-License-Identifier: MIT
// Which camera is current, and which device of the feature library that is: written by the registry, read by
// everything below it.
#pragma once

#include "vxmcd.h"

/// A core handle that addresses no device.
inline constexpr int kNoCoreHandle = -1;

/// Handle of the first camera of the device list.
inline constexpr long kFirstCameraHandle = 101;

/// The current handle. Exported for programs linked to it; one that writes it chooses a camera as SelectCamera()
/// does.
extern VXMCD_API long gblVxmcdCameraHandle;

/// The current handle.
long CurrentCameraHandle() noexcept;

/// The core handle of the current camera, kNoCoreHandle while it is not open. Any thread; does not block, except
/// while the current handle is one that a program wrote by itself. The acquisition thread asks for every frame, so
/// this is no look-up in the registry.
int CurrentCoreHandle() noexcept;

/// Makes @p handle the current one.
void PublishCurrentCamera(long handle);

/// Tells which device the camera @p handle is from now on; kNoCoreHandle when it is closed.
void PublishCoreHandle(long handle, int coreHandle);

/// Makes every camera a closed one for good, without taking a lock: for the child of a fork.
void ForgetCoreHandles() noexcept;
