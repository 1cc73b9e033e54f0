// SPDX-License-Identifier: MIT
// The GenICam description of the test camera.
#pragma once

#include <set>
#include <string>
#include <vector>

/// What a test camera has, and what is wrong with it.
struct TCameraTraits
{
  std::vector<std::string> formats = {"Mono8", "Mono12", "Mono12Packed", "Mono12p", "Mono16"};
  std::set<std::string> without; ///< names of features
  int increment = 1;             ///< of the image area
};

/// The description as GenICam XML. Its registers are those of the camera that Aravis simulates; what that one does not
/// know is memory that keeps what is written.
std::string CameraDescription(const TCameraTraits& traits);
