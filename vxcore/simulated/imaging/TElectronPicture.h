// SPDX-License-Identifier: MIT
// The noiseless picture behind a camera's frames.
#pragma once

#include "vxcore/simulated/imaging/IScene.h"
#include "vxcore/simulated/imaging/TReadoutMap.h"

#include <cstdint>
#include <vector>

namespace vxsim {

/// Electrons per second in every pixel of the frame, binned as read out. What stays is computed once; spots and
/// hot pixels are added for a moment and a dark current, and taken off again before the next ones. Bound to one
/// thread.
class TElectronPicture final
{
public:
  /// Computes what stays; needs settings without fault, of a scene with optics.
  TElectronPicture(const TSensorSettings& sensor, const TGeometrySettings& geometry, const TSceneSettings& scene);

  /// Moves on to that moment and dark current (electrons per second of an ordinary pixel).
  void Update(double sceneSeconds, double darkElectronsPerSecond);

  const TReadoutMap& Map() const { return map_; }

  /// The rates of an output row.
  std::span<const float> Row(int outputRow) const;

  /// The lowest rate among the pixels of one noise block of an output row, spots and hot pixels left out.
  float BlockMinimum(int outputRow, std::size_t block) const;

private:
  struct TTouched
  {
    std::size_t first;
    std::size_t count;
  };

  struct THotPixel
  {
    std::size_t place;
    float excess; ///< dark current in multiples of the ordinary, less the ordinary
  };

  void FindBlockMinima();
  void PlaceHotPixels(const TSensorSettings& sensor);
  void AddSpot(const TLightSpot& spot);
  void Keep(std::size_t first, std::size_t count);
  void RemoveAdditions();

  TReadoutMap map_;
  std::unique_ptr<IScene> scene_;
  double electronsPerPhoton_;
  std::vector<float> rates_;
  std::vector<float> blockMinima_;
  std::size_t blocksPerRow_;
  std::vector<THotPixel> hotPixels_;
  std::vector<TLightSpot> spots_;

  bool isMoving_ = false; // the scene has spots
  bool isUpdated_ = false;
  double sceneSeconds_ = 0.0;
  double darkElectronsPerSecond_ = 0.0;

  // What additions have overwritten, oldest first.
  std::vector<TTouched> touched_;
  std::vector<float> kept_;
  std::vector<float> columnShares_;
};

} // namespace vxsim
