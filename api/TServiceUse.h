// SPDX-License-Identifier: MIT
// The use that a service entry point makes of an open camera.
#pragma once

#include "api/TCameraUse.h"

/// A use of the current camera for potentiometers and EEPROM. Two threads never work on one camera's services at a
/// time: they stage transfers in the camera and change what was loaded. The lock is recursive, for callbacks that
/// call in again. Lives on the stack of one call.
class TServiceUse final
{
public:
  TServiceUse();
  ~TServiceUse();
  TServiceUse(const TServiceUse&) = delete;
  TServiceUse& operator=(const TServiceUse&) = delete;

  /// False when no camera is open.
  explicit operator bool() const { return static_cast<bool>(camera_); }

  TCameraPotsFacade& Pots() const { return *camera_.Record().cameraPots; }
  TObserverList& Observers() const { return *camera_.Record().observers; }
  /// Null without a configuration library.
  IConfiguration* Configuration() const { return camera_.Record().configuration; }
  /// Whether the configuration has the contents of the EEPROM. Stays true after the first success.
  bool IsEepromRead() const { return camera_.Record().eepromRead; }
  void SetEepromRead() const { camera_.Record().eepromRead = true; }

private:
  TCameraUse camera_;
};
