// SPDX-License-Identifier: MIT
// Frames from the feature library.
#include "acquisition/TVXFetchQueue.h"

#include "acquisition/TRunCamera.h"
#include "features/current_core_handle.h"
#include "features/device_access.h"

int TVXFetchQueue::Fetch(unsigned char*& buffer, int& sizeBytes, int timeoutMs)
{
  const int coreHandle = camera_ ? camera_->CoreHandle() : CurrentCoreHandle();
  switch (WaitBuffer(coreHandle, buffer, sizeBytes, static_cast<unsigned int>(timeoutMs))) {
  case VX_SUCCESS:
    return kFrame;
  case VX_ERR_HARDWARE_OVERFLOW:
    return kHardwareOverflow;
  default:
    return kNoFrame;
  }
}
