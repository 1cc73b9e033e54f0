// SPDX-License-Identifier: MIT
// The queue of runs that go on until they are aborted.
#include "acquisition/TDispatchQueue_Requeue.h"

int TDispatchQueue_Requeue::Dispatch(unsigned char* buffer, int sizeBytes)
{
  if (CountFrame(buffer)) RequeueSlot(buffer, sizeBytes);
  return 0;
}
