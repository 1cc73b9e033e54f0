// SPDX-License-Identifier: MIT
// Settings that are a boolean feature of the camera and nothing more.
#pragma once

/// Writes a boolean feature of the current camera. Callers rely on any answer of the camera that has no code here
/// counting as success.
/// @return RC_NOT_INITIALIZED without an open camera; RC_NOT_SUPPORTED, RC_NOT_AVAILABLE or RC_P1_INVALID as the
///         camera answers; RC_SUCCESS
unsigned int WriteSwitch(const wchar_t* feature, int on);
