// SPDX-License-Identifier: MIT
// Unlocks and closes an image on another thread.
#include "spool/TFlushAndCloseFileTask.h"

#include "spool/image_writing.h"

void TFlushAndCloseFileTask::Execute(void* image)
{
  if (spooler_) FinishImage(*spooler_, static_cast<IImage*>(image));
}
