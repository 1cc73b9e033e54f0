// SPDX-License-Identifier: MIT
// A test chart: bar groups, a Siemens star, a grey wedge and frame marks.
#pragma once

#include "vxcore/simulated/imaging/IScene.h"

namespace vxsim {

/// Dark print on a lit ground, scaled to the sensor. Each bar element is smaller than the last by the sixth
/// root of two; at the right they stand in white on black.
class TResolutionChartScene final : public IScene
{
public:
  TResolutionChartScene(const TSensorSettings& sensor, const TSceneSettings& scene);

  void BackgroundRow(int row, int left, std::span<float> photonsPerSecond) const override;

private:
  /// A printed rectangle; edges between pixels are printed in part.
  struct TPatch
  {
    double left;
    double top;
    double right;
    double bottom;
    double ink; ///< 0 leaves the ground, 1 is full print
  };

  void AddFrame();
  void AddBars(double left, double top, double bar, double ink);
  void AddBarGroup(double left, double ink);
  void AddGreyWedge();
  void PrintPatches(int row, int left, std::span<float> values) const;
  void PrintStar(int row, int left, std::span<float> values) const;

  double widthPixels_;
  double heightPixels_;
  double sidePixels_; // of the chart's centred square
  double originX_;
  double originY_;
  double groundPhotonsPerSecond_;
  std::vector<TPatch> patches_;
};

} // namespace vxsim
