// SPDX-License-Identifier: MIT
// Frames from the feature library.
#pragma once

#include "acquisition/TFetchQueue.h"

/// Waits for the frames of the camera that the run addresses; without a run, of the current one. Owned by the acquisition
/// manager.
class TVXFetchQueue final : public TFetchQueue
{
public:
  int Fetch(unsigned char*& buffer, int& sizeBytes, int timeoutMs) override;
  void SetCamera(const TRunCamera* camera) override { camera_ = camera; }

private:
  const TRunCamera* camera_ = nullptr;
};
