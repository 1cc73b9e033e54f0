// SPDX-License-Identifier: MIT
// Hands frames to a queue.
#include "spool/TQueuingSpoolAlgorithm.h"

#include "spool/TSpoolQueue.h"
#include "utility/TQuorinLibDebugOutput.h"

#include <exception>

using QuorinUtility::TQuorinLibDebugOutput;

int TQueuingSpoolAlgorithm::Spool(int index, unsigned char* buffer, int sizeBytes)
{
  if (!queue_) {
    TQuorinLibDebugOutput::Output(__FILE__, __LINE__, __func__, "image %d: no queue", index);
    return 0;
  }
  try {
    queue_->Queue(TSpoolFileData(buffer, index, sizeBytes));
    return 1;
  } catch (const std::exception& error) {
    TQuorinLibDebugOutput::Output(__FILE__, __LINE__, __func__, "image %d not queued: %s", index, error.what());
    return 0;
  }
}
