// SPDX-License-Identifier: MIT
// What `vxmcd doctor` looks at, area by area. Nothing is set or written, but for a file that CheckDisk() makes and removes.
#pragma once

#include "tools/CameraDescription.h"
#include "tools/CameraList.h"
#include "tools/doctor/TFindings.h"
#include "tools/TFlatCamera.h"

#include <optional>
#include <string>
#include <vector>

namespace vxtool {

/// What the areas know of the cameras, which are asked once.
struct TCameraFacts
{
  unsigned int listCode = RC_SUCCESS;
  std::vector<TAttachedCamera> cameras;
  std::string openError;                         ///< why the chosen camera cannot be opened; "" when it is open
  std::optional<TCameraDescription> description; ///< of the open camera

  /// Bytes of a full image with 16 bits a pixel, and of as many images as the camera makes in a second at its present
  /// settings; 0 when that is not known.
  double ImageBytes() const;
  double BytesPerSecond() const;
};

/// Which libraries the program has, from where, and whether there are others that a program may get in their place.
void CheckLibraries(TFindings& findings);
void CheckCameras(TFindings& findings, const TCameraFacts& facts, int camera);
/// Whether cameras on USB may be opened by this user. @param root  of the system, "" for the real one
void CheckPermissions(TFindings& findings, const std::string& root = "");
/// What the system limits: memory against what a run needs, files, processors, network buffers.
void CheckLimits(TFindings& findings, const TCameraFacts& facts);
/// Writes for about 2 s in a directory, and compares with what the camera makes.
void CheckDisk(TFindings& findings, const TCameraFacts& facts, const std::string& directory);
/// Clock, processors' speed, and 2 s of images of @p camera, null when none is open.
void CheckTiming(TFindings& findings, TFlatCamera* camera);
void CheckPython(TFindings& findings);

} // namespace vxtool
