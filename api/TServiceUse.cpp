// SPDX-License-Identifier: MIT
// The use that a service entry point makes of an open camera.
#include "api/TServiceUse.h"

#include "utility/TQuorinCriticalSection.h"

TServiceUse::TServiceUse()
{
  if (camera_) camera_.Record().serviceLock->Enter();
}

TServiceUse::~TServiceUse()
{
  if (camera_) camera_.Record().serviceLock->Exit();
}
