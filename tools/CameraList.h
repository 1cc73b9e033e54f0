// SPDX-License-Identifier: MIT
// The cameras that are attached, and which one a serial number belongs to.
#pragma once

#include "tools/Messages.h"
#include "tools/Options.h"
#include "tools/TRedaction.h"

#include <optional>
#include <string>
#include <vector>

namespace vxtool {

/// What is known of a camera without setting anything on it.
struct TAttachedCamera
{
  int number = 0;
  long handle = 0;
  std::optional<std::string> model;
  std::optional<std::string> serialText; ///< as the camera has it
  std::optional<int> serial;             ///< the number in it, which other commands report
  std::optional<std::string> source;     ///< "simulated", an address; nothing when the camera does not say
  std::string problem;                   ///< why it cannot be opened; "" when it can
};

/// Opens the cameras one after the other in the feature library alone, asks them and closes them. A camera that another
/// program uses cannot be opened, and is left alone.
/// @return  a result code of GetAvailableCameras()
unsigned int FindCameras(std::vector<TAttachedCamera>& cameras);
/// Completes the choice: the number of the camera with the serial number, the whole of it or the number in it. Does
/// nothing when none is given. Says why when there is no such camera.
ExitCode FindCameraNumber(TCameraChoice& choice);

/// What the cameras say of themselves and their places is nobody else's business.
void HideCameras(TRedaction& redaction, const std::vector<TAttachedCamera>& cameras);

} // namespace vxtool
