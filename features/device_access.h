// SPDX-License-Identifier: MIT
// Opening devices, and the frames that they deliver.
#pragma once

#include "features/feature_names.h"
#include "vxcore.h"

// Each function is one call into the feature library and returns its code.

/// How many devices there are.
inline int ReadDeviceCount(long long& count)
{
  return VX_GetInt(VX_HANDLE_SYSTEM, Feature::kDeviceCount, &count);
}

/// Opens the device at @p index of the list of devices.
inline int OpenDevice(int index, int& coreHandle)
{
  return VX_Open(index, &coreHandle);
}

inline int CloseDevice(int coreHandle)
{
  return VX_Close(coreHandle);
}

/// Gives a buffer to the device, which writes a frame into it.
inline int QueueBuffer(int coreHandle, unsigned char* buffer, int sizeBytes)
{
  return VX_QueueBuffer(coreHandle, buffer, sizeBytes);
}

/// Blocks until a queued buffer has a frame, or the time is up.
inline int WaitBuffer(int coreHandle, unsigned char*& buffer, int& sizeBytes, unsigned int timeoutMs)
{
  return VX_WaitBuffer(coreHandle, &buffer, &sizeBytes, timeoutMs);
}

/// Takes every buffer back from the device.
inline int FlushBuffers(int coreHandle)
{
  return VX_Flush(coreHandle);
}
