// SPDX-License-Identifier: MIT
// An open camera whose device exists only as answers.
#pragma once

#include "acquisition/TVxmcdAcquisitionManager.h"
#include "api/camera_registry.h"
#include "utility/TQuorinCriticalSection.h"

/// Is the current camera, with core handle 7, while it lives.
class TStagedCamera final
{
public:
  TStagedCamera()
  {
    TCamera camera;
    camera.cameraHandle = kCoreHandle;
    camera.acquisitionManager = &manager_;
    RegisterCamera(kFirstCameraHandle, camera);
  }
  ~TStagedCamera() { UnregisterCamera(kFirstCameraHandle); }
  TStagedCamera(const TStagedCamera&) = delete;
  TStagedCamera& operator=(const TStagedCamera&) = delete;

private:
  static constexpr int kCoreHandle = 7;

  QuorinUtility::TQuorinCriticalSection cameraLock_;
  TVxmcdAcquisitionManager manager_{&cameraLock_, kCoreHandle};
};
