// SPDX-License-Identifier: MIT
// The use that an entry point makes of an open camera.
#pragma once

#include "api/camera_registry.h"
#include "utility/TAutoQuorinCriticalSection.h"

class TPseudoAcquisitionMode;
class TVxmcdAcquisitionManager;

/// The one way for an entry point to reach a camera. Keeps its objects alive: ShutDown() waits for the end of every
/// use before it destroys anything. False when no camera is open under the handle. Lives on the stack of one call.
class TCameraUse final
{
public:
  /// Uses the current camera.
  TCameraUse() : TCameraUse(CurrentCameraHandle()) {}
  explicit TCameraUse(long handle) : camera_(EnterCamera(handle, manager_)) {}
  ~TCameraUse();
  TCameraUse(const TCameraUse&) = delete;
  TCameraUse& operator=(const TCameraUse&) = delete;

  explicit operator bool() const { return camera_ != nullptr; }

  TCamera& Record() const { return *camera_; }
  int CoreHandle() const { return static_cast<int>(camera_->cameraHandle); }
  TVxmcdAcquisitionManager& Manager() const { return *manager_; }
  TPseudoAcquisitionMode& AcquisitionMode() const { return *camera_->acquisitionMode; }
  TPseudoADChannel& ADChannel() const { return *camera_->adChannel; }
  TPseudoAmplifier& Amplifier() const { return *camera_->amplifier; }
  TPseudoHSSpeed& HSSpeed() const { return *camera_->hsSpeed; }
  IPreAmpGain& PreAmpGain() const { return *camera_->preAmpGainModel; }
  TPseudoBaselineClamp& BaselineClamp() const { return *camera_->baselineClamp; }
  TgetFIFOUsage& FIFOUsage() const { return *camera_->fifoUsage; }

  /// Calls @p move with the retrieval cursor, which it may change. No other thread sees or changes the cursor
  /// meanwhile, so it is for looking up a number and not for copying an image.
  template <class Move>
  auto WithRetrievalCursor(Move move) const
  {
    const QuorinUtility::TAutoQuorinCriticalSection lock(camera_->cursorLock);
    return move(camera_->retrievalCursor);
  }

private:
  TVxmcdAcquisitionManager* manager_ = nullptr; // the record's pointer is reset while the camera is closed
  TCamera* camera_;
};
