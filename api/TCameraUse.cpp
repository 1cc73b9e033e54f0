// SPDX-License-Identifier: MIT
// The use that an entry point makes of an open camera.
#include "api/TCameraUse.h"

#include "acquisition/TVxmcdAcquisitionManager.h"

TCameraUse::~TCameraUse()
{
  if (manager_) manager_->Uses().Leave();
}
