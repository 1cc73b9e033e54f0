// SPDX-License-Identifier: MIT
// The queue of runs that go on until they are aborted.
#include "acquisition/TDispatchQueue_Requeue.h"

#include "features/current_core_handle.h"
#include "vxcore.h"

#include <algorithm>
#include <limits>

int TDispatchQueue_Requeue::Dispatch(unsigned char* buffer, int sizeBytes)
{
  if (!CountFrame(buffer)) return 0;
  // A slot goes back whole, even after a frame that was reported shorter or longer than the run's frames are.
  const std::int64_t slotBytes = GetImageSizeBytes() > 0 ? GetImageSizeBytes() : sizeBytes;
  VX_QueueBuffer(CurrentCoreHandle(), buffer,
                 static_cast<int>(std::min<std::int64_t>(slotBytes, std::numeric_limits<int>::max())));
  return 0;
}
