// SPDX-License-Identifier: MIT
// Frames from the feature library.
#pragma once

#include "acquisition/TFetchQueue.h"

/// Waits for the frames of the camera that is current at the moment of the call. Owned by the acquisition manager.
class TVXFetchQueue final : public TFetchQueue
{
public:
  int Fetch(unsigned char*& buffer, int& sizeBytes, int timeoutMs) override;
};
