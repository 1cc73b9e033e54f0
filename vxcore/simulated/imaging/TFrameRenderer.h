// SPDX-License-Identifier: MIT
// Makes the pixels of simulated frames.
#pragma once

#include "vxcore/simulated/imaging/TFrameSettings.h"

#include <memory>
#include <span>
#include <string>

namespace vxsim {

class TElectronPicture;
struct TRowReadout;

/// Turns settings into the pixel area of a frame: scene, optics, noise, read-out, encoding, or a test pattern.
/// One belongs to each simulated camera. Keeps the noiseless picture of the last geometry and scene, so that a
/// frame with the same ones costs only its noise; a change of exposure or temperature costs nothing extra. Bound
/// to one thread at a time; different renderers may work at once. Output depends on the settings alone. Settings
/// that make no frame, and buffers too small for it, return false and set LastError(); nothing is written then.
class TFrameRenderer final
{
public:
  TFrameRenderer();
  ~TFrameRenderer();
  TFrameRenderer(const TFrameRenderer&) = delete;
  TFrameRenderer& operator=(const TFrameRenderer&) = delete;

  /// Fills the first PixelAreaBytes() of the buffer, row padding included; what follows is not touched. The
  /// metadata tail is TMetadataWriter's. Counter and Stamp scenes stamp head and tail of the pixel area.
  bool Render(const TFrameSettings& settings, std::span<unsigned char> buffer);

  /// Does ahead of time what the first Render() with these settings would do once, so that it is not late.
  bool Prepare(const TFrameSettings& settings);

  const std::string& LastError() const { return lastError_; }

private:
  bool Check(const TFrameSettings& settings);
  void PreparePicture(const TFrameSettings& settings);
  void RenderRow(const TFrameSettings& settings, const TRowReadout& readout, int row, unsigned char* out) const;

  // What the picture was made of.
  TSensorSettings sensor_;
  TGeometrySettings geometry_;
  TSceneSettings scene_;
  std::unique_ptr<TElectronPicture> picture_;
  std::string lastError_;
};

} // namespace vxsim
