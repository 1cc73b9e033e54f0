// SPDX-License-Identifier: MIT
// Which device of the feature library is the current camera: written by the registry, read by everything below it.
#pragma once

/// A core handle that addresses no device.
inline constexpr int kNoCoreHandle = -1;

/// The core handle of the current camera, kNoCoreHandle while it is not open. Any thread; never blocks. The
/// acquisition thread asks for every frame, so this is one atomic read and not a look-up in the registry.
int CurrentCoreHandle() noexcept;

/// Tells which device is the current camera from now on. Called by the registry whenever that changes.
void PublishCurrentCoreHandle(int coreHandle) noexcept;
