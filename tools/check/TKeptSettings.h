// SPDX-License-Identifier: MIT
// The settings that a camera had before it was checked.
#pragma once

#include "tools/CameraFeature.h"

#include <string>
#include <vector>

namespace vxtool {

/// Reads every setting of a camera and puts them back. Both open the camera in the feature library alone, since the library
/// above it writes settings when it opens one: it must be closed there. One thread.
class TKeptSettings final
{
public:
  /// Why the camera cannot be opened; "" when its settings were read.
  std::string Read(int camera);
  /// Which settings are not what they were, or why the camera cannot be opened; "" when all are back.
  std::string PutBack();

private:
  struct TKeptTrack
  {
    std::string top;
    std::string height;
  };
  void ReadTracks(int handle);
  void PutBackTracks(int handle) const;

  int camera_ = 0;
  std::vector<TFeatureSetting> settings_;
  std::vector<TKeptTrack> tracks_; ///< of the track layout
};

} // namespace vxtool
