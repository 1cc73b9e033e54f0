// SPDX-License-Identifier: MIT
// One closing of a camera at a time.
#include "api/TClosingTurn.h"

#include "api/camera_registry.h"
#include "utility/TQuorinCriticalSection.h"

TClosingTurn::TClosingTurn(long handle)
    : process_(CameraOfThread() == kNoCameraOfThread ? &currentCameraShutdownMutex.object : nullptr)
{
  if (process_) process_->Enter();
  camera_ = ClosingLock(handle);
  if (camera_) camera_->Enter();
}

TClosingTurn::~TClosingTurn()
{
  if (camera_) camera_->Exit();
  if (process_) process_->Exit();
}
